#include "tests/support/Heap.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>

// The C library's own allocation functions.
extern "C" {
void* libcMalloc(std::size_t size) __asm__("__libc_malloc");
void* libcCalloc(std::size_t count, std::size_t size) __asm__("__libc_calloc");
void* libcRealloc(void* block, std::size_t size) __asm__("__libc_realloc");
void* libcMemalign(std::size_t alignment, std::size_t size) __asm__("__libc_memalign");
void libcFree(void* block) __asm__("__libc_free");
}

namespace {

thread_local bool counting = false;
thread_local int untilFailure = 0;
thread_local zavtest::Shortage kind = zavtest::Shortage::Once;
thread_local long live = 0;

bool fails() {
    if (!counting) return false;
    if (untilFailure > 0) --untilFailure;
    if (untilFailure > 0) return false;
    if (kind == zavtest::Shortage::Once) counting = false;
    errno = ENOMEM;
    return true;
}

template <class Allocate>
void* allocated(Allocate allocate) {
    void* const block = fails() ? nullptr : allocate();
    if (block != nullptr) ++live;
    return block;
}

}  // namespace

// These must be visible, or the system's libraries would not use them.
#pragma GCC visibility push(default)
extern "C" {

void* malloc(std::size_t size) {
    return allocated([size] { return libcMalloc(size); });
}

void* calloc(std::size_t count, std::size_t size) {
    return allocated([=] { return libcCalloc(count, size); });
}

void* realloc(void* block, std::size_t size) {
    if (block == nullptr) return malloc(size);
    return fails() ? nullptr : libcRealloc(block, size);
}

void* memalign(std::size_t alignment, std::size_t size) {
    return allocated([=] { return libcMemalign(alignment, size); });
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
    return memalign(alignment, size);
}

int posix_memalign(void** place, std::size_t alignment, std::size_t size) {
    void* const block = memalign(alignment, size);
    if (block == nullptr) return ENOMEM;
    *place = block;
    return 0;
}

void free(void* block) {
    if (block != nullptr) --live;
    libcFree(block);
}
}
#pragma GCC visibility pop

namespace zavtest {

FailingHeap::FailingHeap(int nth, Shortage shortage) {
    untilFailure = nth;
    kind = shortage;
    counting = true;
}

FailingHeap::~FailingHeap() {
    counting = false;
}

bool FailingHeap::happened() const {
    return untilFailure == 0;
}

PlentifulHeap::PlentifulHeap() : counting_(counting) {
    counting = false;
}

PlentifulHeap::~PlentifulHeap() {
    counting = counting_;
}

long liveBlocks() {
    return live;
}

}  // namespace zavtest
