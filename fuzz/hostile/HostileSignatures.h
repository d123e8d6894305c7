#pragma once

#include <string>
#include <vector>

#include "fuzz/hostile/Harness.h"

namespace hostile {

// Generates a signature file from the grammar of the language. Its leaves use these paths. Most files are valid.
std::string hostileSignatures(Random& random, const std::vector<std::string>& paths);

}  // namespace hostile
