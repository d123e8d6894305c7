#pragma once

#include <string_view>

namespace toolkit {

// The value of a key in one group of a desktop-style key file:
//     [group]
//     key=value
// The result is a part of `text`. It is empty when the group or the key is missing. The first of two equal keys counts.
std::string_view keyFileValue(std::string_view text, std::string_view group, std::string_view key);

}  // namespace toolkit
