#pragma once

#include <string_view>

namespace toolkit::quorvah {

// Whether `left` sorts before `right` if the decimal numbers in both are compared by value: "cpu9" before "cpu10".
bool naturallyBefore(std::string_view left, std::string_view right);

}  // namespace toolkit::quorvah
