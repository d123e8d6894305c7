#include "tessa/Arena.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#include "tessa/Pages.h"

namespace tessa {

namespace {

// Block sizes double from the first to the largest, so small documents take little memory and large ones few blocks.
constexpr std::size_t kFirstBlock = std::size_t{16} << 10;
constexpr std::size_t kMaxBlock = std::size_t{4} << 20;

std::byte* allocateBlock(std::size_t size) {
    if (size < kLargePage) return static_cast<std::byte*>(std::malloc(size));
    const std::size_t wholeSteps = (size + kLargePage - 1) / kLargePage * kLargePage;
    void* const block = std::aligned_alloc(kLargePage, wholeSteps);
    if (block != nullptr) useLargePages(block, size);
    return static_cast<std::byte*>(block);
}

}  // namespace

void Arena::clear() {
    blocks_.clear();
    next_ = end_ = nullptr;
    budget_.refund(taken_);
    taken_ = 0;
    blockSize_ = 0;
}

void Arena::addBlock(std::size_t bytes) {
    blockSize_ = blockSize_ == 0 ? kFirstBlock : std::min(blockSize_ * 2, kMaxBlock);
    const std::size_t size = std::max(aligned(bytes), blockSize_);
    budget_.charge(size);
    taken_ += size;
    kest::Malloced<std::byte> block(allocateBlock(size));
    if (block == nullptr) throw std::bad_alloc();
    blocks_.push_back(std::move(block));
    next_ = blocks_.back().get();
    end_ = next_ + size;
}

}  // namespace tessa
