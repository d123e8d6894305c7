#pragma once

#include <cstddef>
#include <stdexcept>
#include <vector>

#include "kest/Malloced.h"

namespace tessa {

// Thrown when a document needs more memory than its budget allows.
class DocumentTooLarge : public std::runtime_error {
  public:
    DocumentTooLarge() : std::runtime_error("document too large") {}
};

// The number of bytes that a document may allocate, shared by all its parts.
class MemoryBudget {
  public:
    // Throws DocumentTooLarge if the limit would be exceeded.
    void charge(std::size_t bytes) {
        if (bytes > left_) throw DocumentTooLarge();
        left_ -= bytes;
    }
    void refund(std::size_t bytes) { left_ += bytes; }

  private:
    std::size_t left_ = std::size_t{1} << 30;
};

// Allocates memory in small pieces and releases all of it at once. Destructors of objects in it are not called.
class Arena {
  public:
    explicit Arena(MemoryBudget& budget) : budget_(budget) {}
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    // The memory is aligned for pointers and valid for the lifetime of the arena.
    void* allocate(std::size_t bytes) {
        bytes = aligned(bytes);
        if (bytes > room()) addBlock(bytes);
        std::byte* const piece = next_;
        next_ += bytes;
        return piece;
    }

    // The rest of the current block, for a piece of unknown size: write to it, then take() the number of bytes used.
    std::byte* open() const { return next_; }
    std::size_t room() const { return static_cast<std::size_t>(end_ - next_); }
    void take(std::size_t bytes) { next_ += aligned(bytes); }

    // Starts a new block of at least `bytes` bytes.
    void addBlock(std::size_t bytes);

  private:
    static constexpr std::size_t kAlignment = alignof(void*);

    static constexpr std::size_t aligned(std::size_t bytes) {
        return (bytes + kAlignment - 1) & ~(kAlignment - 1);
    }

    MemoryBudget& budget_;
    std::vector<kest::Malloced<std::byte>> blocks_;
    std::byte* next_ = nullptr;
    std::byte* end_ = nullptr;
    std::size_t blockSize_ = 0;
};

}  // namespace tessa
