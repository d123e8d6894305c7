#pragma once

#include <cstddef>

namespace tessa {

// Asks the system to give the memory of a large block in big steps: taking it page by page costs more than
// reading the document. Changes nothing but the speed.
void useLargePages(void* block, std::size_t size);

// What a block is to be aligned to for this to help.
constexpr std::size_t kLargePage = std::size_t{2} << 20;

}  // namespace tessa
