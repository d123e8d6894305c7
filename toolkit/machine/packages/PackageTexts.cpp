#include "toolkit/machine/packages/PackageTexts.h"

#include <algorithm>

namespace toolkit {

std::string_view PackageTexts::keep(std::initializer_list<std::string_view> texts) {
    std::size_t size = 0;
    for (const std::string_view text : texts) size += text.size();
    if (size == 0 || !budget_.keep(size)) return {};
    char* const copy = static_cast<char*>(copies_.allocate(size, 1));
    char* end = copy;
    for (const std::string_view text : texts) end = std::ranges::copy(text, end).out;
    return {copy, size};
}

}  // namespace toolkit
