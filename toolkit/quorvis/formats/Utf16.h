#pragma once

#include <string>
#include <string_view>

namespace toolkit::quorvis {

// Converts UTF-16 to UTF-8. An unpaired surrogate becomes U+FFFD.
std::string utf8OfUtf16(std::u16string_view text);

}  // namespace toolkit::quorvis
