#pragma once

#include <string>

namespace zav {

// Builds the environment block of a scanner: the given entries, with the toolkit's directory prepended to the library
// search path DYLD_LIBRARY_PATH. That variable is added at the end if no entry sets it. Each entry ends with a NUL, the
// block with three more. `entries` ends with a null pointer.
std::string scannerEnvironment(const char* const* entries, const std::string& directory);

}  // namespace zav
