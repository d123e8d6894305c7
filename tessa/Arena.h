#pragma once

#include <cstddef>
#include <vector>

#include "kest/Malloced.h"
#include "tessa/MemoryBudget.h"

namespace tessa {

// Allocates memory in small pieces and releases all of it at once. Destructors of objects in it are not called.
class Arena {
  public:
    explicit Arena(MemoryBudget& budget) : budget_(budget) {}
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    // The memory is aligned for pointers and valid for the lifetime of the arena.
    void* allocate(std::size_t bytes) {
        bytes = aligned(bytes);
        if (bytes > static_cast<std::size_t>(end_ - next_)) addBlock(bytes);
        std::byte* const piece = next_;
        next_ += bytes;
        return piece;
    }

    // Releases all memory.
    void clear();

  private:
    static constexpr std::size_t kAlignment = alignof(void*);

    static constexpr std::size_t aligned(std::size_t bytes) {
        return (bytes + kAlignment - 1) & ~(kAlignment - 1);
    }

    void addBlock(std::size_t bytes);

    MemoryBudget& budget_;
    std::vector<kest::Malloced<std::byte>> blocks_;
    std::byte* next_ = nullptr;
    std::byte* end_ = nullptr;
    std::size_t blockSize_ = 0;
    std::size_t taken_ = 0;  // of the budget
};

}  // namespace tessa
