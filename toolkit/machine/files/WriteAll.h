#pragma once

#include <string_view>

namespace toolkit {

// Writes all of it, however many calls that takes. False, with errno set, when one of them fails.
bool writeAll(int descriptor, std::string_view bytes);

}  // namespace toolkit
