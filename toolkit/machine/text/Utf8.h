#pragma once

#include <string_view>

namespace toolkit {

inline constexpr char32_t kInvalidUtf8 = 0xFFFFFFFF;

// Takes the character at the front of `bytes`. kInvalidUtf8, with nothing taken, when they do not begin with UTF-8 in its
// shortest form, or with a surrogate. REQUIRES: !bytes.empty().
char32_t takeUtf8Character(std::string_view& bytes);

bool isUtf8(std::string_view bytes);

}  // namespace toolkit
