#pragma once

#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>

namespace kest {

struct FreeMalloced {
    void operator()(void* block) const { std::free(block); }
};

// Memory from malloc that is freed with its owner.
template <class T>
using Malloced = std::unique_ptr<T, FreeMalloced>;

// An uninitialised array; null for a count of 0. Throws std::bad_alloc.
template <class T>
Malloced<T> mallocArray(std::size_t count) {
    if (count == 0) return nullptr;
    // NOLINTNEXTLINE(bugprone-sizeof-expression): T may be a pointer
    Malloced<T> array(static_cast<T*>(std::malloc(count * sizeof(T))));
    if (array == nullptr) throw std::bad_alloc();
    return array;
}

}  // namespace kest
