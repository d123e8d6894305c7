#pragma once

#include <string_view>

namespace toolkit {

// Writes all bytes, with as many calls of write() as needed. False, with errno set, when one of them fails.
bool writeAll(int descriptor, std::string_view bytes);

}  // namespace toolkit
