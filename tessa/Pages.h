#pragma once

#include <cstddef>

namespace tessa {

// Asks the system to back a large block with large pages: faulting in small pages takes more time than reading the
// document. Affects only speed.
void useLargePages(void* block, std::size_t size);

// The alignment that a block needs to benefit.
constexpr std::size_t kLargePage = std::size_t{2} << 20;

}  // namespace tessa
