#pragma once

#include <vector>

namespace kest {

// The entries of an environment block, in order, pointing into it. Each entry ends with a NUL, and two empty
// entries in a row end the block; a single empty entry is passed over. A null block has no entries.
std::vector<const char*> splitEnvironmentBlock(const char* block);

}  // namespace kest
