#pragma once

#include <string>

namespace zavbench {

// Runs a program with posix_spawn, a pipe, reads of 64 KiB and waitpid. False if its exit status is not 0.
bool spawnBare(const std::string& path, const std::string& argument);

// Creates a file with its own name as content. False if the file exists already.
bool makeFile(const std::string& path);

}  // namespace zavbench
