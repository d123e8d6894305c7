#pragma once

#include <string>

namespace zavbench {

// posix_spawn, a pipe, reads of 64 KiB, waitpid, and nothing else. False when the program did not end with
// status 0.
bool spawnBare(const std::string& path, const std::string& argument);

// Makes a file that is not there yet, with its own name in it.
bool makeFile(const std::string& path);

}  // namespace zavbench
