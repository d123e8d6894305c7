#pragma once

#include <string>

namespace zav {

// The environment of a scanner: the given entries, with the toolkit's directory in front of the library
// search path DYLD_LIBRARY_PATH, which is added at the end when no entry holds it. Each entry ends with a
// NUL, the block with three more. `entries` ends with a null.
std::string environmentBlock(const char* const* entries, const std::string& directory);

}  // namespace zav
