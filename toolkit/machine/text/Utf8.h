#pragma once

#include <string_view>

namespace toolkit {

inline constexpr char32_t kInvalidUtf8 = 0xFFFFFFFF;

// Takes the first character of `bytes`. Returns kInvalidUtf8 and takes nothing when the first character is not UTF-8 in its
// shortest form or is a surrogate. REQUIRES: !bytes.empty().
char32_t takeUtf8Character(std::string_view& bytes);

bool isUtf8(std::string_view bytes);

}  // namespace toolkit
