#pragma once

#include <string>
#include <string_view>

namespace toolkit {

inline constexpr char32_t kInvalidUtf8 = 0xFFFFFFFF;

// Takes the first character of `bytes`. Returns kInvalidUtf8 and takes nothing when the first character is not UTF-8 in its
// shortest form or is a surrogate. REQUIRES: !bytes.empty().
char32_t takeUtf8Character(std::string_view& bytes);

bool isUtf8(std::string_view bytes);

// Converts UTF-16. An unpaired surrogate becomes U+FFFD.
std::string utf8FromUtf16(std::u16string_view text);
// Converts ISO-8859-1.
std::string utf8FromLatin1(std::string_view bytes);

}  // namespace toolkit
