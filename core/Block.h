#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

namespace zav {

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};

// An array from malloc, released with its owner.
template <class T>
using Block = std::unique_ptr<T, FreeBlock>;

// Room for `count` items, none of them set; null for none. Throws std::bad_alloc.
template <class T>
Block<T> newBlock(std::size_t count) {
    if (count == 0) return nullptr;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): items are pointers, mostly
    Block<T> block(static_cast<T*>(std::malloc(count * sizeof(T))));
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

}  // namespace zav
