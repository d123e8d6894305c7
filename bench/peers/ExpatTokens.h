#pragma once

#include <string>

namespace zavbench {

// Expat reading a file without a handler: the least that any reader over Expat costs. False when the file is
// refused.
bool tokeniseWithExpat(const std::string& path);

}  // namespace zavbench
