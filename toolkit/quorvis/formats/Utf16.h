#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvis {

// Half of a pair stands for U+FFFD.
std::string utf8OfUtf16(std::u16string_view text);

}  // namespace toolkit::quorvis
