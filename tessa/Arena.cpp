#include "tessa/Arena.h"

#include <algorithm>
#include <new>

namespace tessa {

namespace {

// Small documents stay small; large ones need few blocks.
constexpr std::size_t kFirstBlock = std::size_t{16} << 10;
constexpr std::size_t kLargestBlock = std::size_t{4} << 20;

}  // namespace

void Arena::addBlock(std::size_t bytes) {
    blockSize_ = blockSize_ == 0 ? kFirstBlock : std::min(blockSize_ * 2, kLargestBlock);
    const std::size_t size = std::max(bytes, blockSize_);
    blocks_.reserve(blocks_.size() + 1);
    budget_.charge(size);
    blocks_.emplace_back(static_cast<std::byte*>(::operator new(size)));
    next_ = blocks_.back().get();
    end_ = next_ + size;
}

}  // namespace tessa
