#pragma once

#include <vector>

namespace kest {

// Returns pointers to the entries of an environment block, in order. Each entry ends with a NUL. Two consecutive empty
// entries end the block; a single empty entry is skipped. A null block has no entries.
std::vector<const char*> splitEnvironmentBlock(const char* block);

}  // namespace kest
