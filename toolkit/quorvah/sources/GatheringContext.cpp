#include "toolkit/quorvah/sources/GatheringContext.h"

#include <utility>

#include "toolkit/quorvah/sources/DmiPlaceholders.h"

namespace toolkit::quorvah {

GatheringContext::GatheringContext(Options options)
    : options_(std::move(options)),
      root_(options_.root.empty() ? Root() : Root(options_.root)),
      pciNames_(options_.ids, "pci.ids"),
      usbNames_(options_.ids, "usb.ids") {
    root_.stayLocal();
}

std::string GatheringContext::firmwareText(std::string text) const {
    text.resize(text.find_last_not_of(" \t\r\n") + 1);
    if (!options_.raw && isPlaceholder(text)) text.clear();
    return text;
}

}  // namespace toolkit::quorvah
