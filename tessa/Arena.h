#pragma once

#include <cstddef>
#include <stdexcept>
#include <vector>

#include "kest/Malloced.h"

namespace tessa {

// A document wants more memory than any inventory needs.
class DocumentTooLarge : public std::runtime_error {
  public:
    DocumentTooLarge() : std::runtime_error("document too large") {}
};

// What one document may take, in bytes; shared by all that it is made of.
class Budget {
  public:
    // Throws DocumentTooLarge when the document would exceed its limit.
    void charge(std::size_t bytes) {
        if (bytes > left_) throw DocumentTooLarge();
        left_ -= bytes;
    }
    void refund(std::size_t bytes) { left_ += bytes; }

  private:
    std::size_t left_ = std::size_t{1} << 30;
};

// Memory that is handed out piece by piece and released all at once. Nothing in it is destroyed.
class Arena {
  public:
    explicit Arena(Budget& budget) : budget_(budget) {}
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    // Aligned for pointers; valid as long as the arena.
    void* allocate(std::size_t bytes) {
        bytes = aligned(bytes);
        if (bytes > room()) addBlock(bytes);
        std::byte* const piece = next_;
        next_ += bytes;
        return piece;
    }

    // The rest of the current block, for a piece whose size is not known yet: fill it, then take() what was
    // used.
    std::byte* open() const { return next_; }
    std::size_t room() const { return static_cast<std::size_t>(end_ - next_); }
    void take(std::size_t bytes) { next_ += aligned(bytes); }

    // Starts a new block with room for `bytes` at least.
    void addBlock(std::size_t bytes);

  private:
    static constexpr std::size_t kAlignment = alignof(void*);

    static constexpr std::size_t aligned(std::size_t bytes) {
        return (bytes + kAlignment - 1) & ~(kAlignment - 1);
    }

    Budget& budget_;
    std::vector<kest::Malloced<std::byte>> blocks_;
    std::byte* next_ = nullptr;
    std::byte* end_ = nullptr;
    std::size_t blockSize_ = 0;
};

}  // namespace tessa
