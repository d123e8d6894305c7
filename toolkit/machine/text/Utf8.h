#pragma once

#include <string>
#include <string_view>

namespace toolkit {

inline constexpr char32_t kInvalidUtf8 = 0xFFFFFFFF;

// Takes the first character of `bytes`. Returns kInvalidUtf8 and takes nothing when the first character is not UTF-8 in its
// shortest form or is a surrogate. REQUIRES: !bytes.empty().
char32_t takeUtf8Character(std::string_view& bytes);

bool isUtf8(std::string_view bytes);

// The UTF-16 code units in little-endian bytes, up to a zero.
std::u16string utf16Units(std::string_view bytes);
// Converts UTF-16. Each unpaired surrogate becomes `replacement`, which is U+FFFD by default.
std::string utf8FromUtf16(std::u16string_view text, std::string_view replacement = "\xEF\xBF\xBD");
// Converts ISO-8859-1.
std::string utf8FromLatin1(std::string_view bytes);

}  // namespace toolkit
