#include "toolkit/quorvah/sources/Scan.h"

#include <utility>

#include "toolkit/quorvah/sources/Placeholders.h"

namespace toolkit::quorvah {

Scan::Scan(Options options)
    : options_(std::move(options)), root_(options_.root.empty() ? Root() : Root(options_.root)) {}

std::string Scan::firmwareText(std::string text) const {
    text.resize(text.find_last_not_of(" \t\r\n") + 1);
    if (!options_.raw && isPlaceholder(text)) text.clear();
    return text;
}

}  // namespace toolkit::quorvah
