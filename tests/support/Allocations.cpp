#include "tests/support/Allocations.h"

#include <cstdarg>
#include <new>

// The names that the linker's option --wrap uses.
extern "C" {
void* zavtestMalloc(std::size_t size) __asm__("__wrap_malloc");
void* zavtestMallocReally(std::size_t size) __asm__("__real_malloc");
void* zavtestAlignedAlloc(std::size_t alignment, std::size_t size) __asm__("__wrap_aligned_alloc");
void* zavtestAlignedAllocReally(std::size_t alignment, std::size_t size) __asm__("__real_aligned_alloc");
char* zavtestStrdup(const char* text) __asm__("__wrap_strdup");
char* zavtestStrdupReally(const char* text) __asm__("__real_strdup");
int zavtestVasprintf(char** text, const char* format, va_list arguments) __asm__("__wrap_vasprintf");
int zavtestVasprintfReally(char** text, const char* format, va_list arguments) __asm__("__real_vasprintf");
void zavtestFree(void* block) __asm__("__wrap_free");
void zavtestFreeReally(void* block) __asm__("__real_free");
}

namespace {

thread_local int untilFailure = 0;
thread_local long live = 0;
thread_local std::size_t lastMalloc = 0;

bool fails() {
    return untilFailure > 0 && --untilFailure == 0;
}

template <class Allocate>
auto* allocated(Allocate allocate) {
    auto* const block = fails() ? nullptr : allocate();
    if (block != nullptr) ++live;
    return block;
}

void* newBlock(std::size_t size) noexcept {
    return allocated([size] { return zavtestMallocReally(size == 0 ? 1 : size); });
}

void* newBlockOrThrow(std::size_t size) {
    void* const block = newBlock(size);
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void release(void* block) {
    if (block != nullptr) --live;
    zavtestFreeReally(block);
}

}  // namespace

void* zavtestMalloc(std::size_t size) {
    lastMalloc = size;
    return allocated([size] { return zavtestMallocReally(size); });
}

void* zavtestAlignedAlloc(std::size_t alignment, std::size_t size) {
    return allocated([=] { return zavtestAlignedAllocReally(alignment, size); });
}

char* zavtestStrdup(const char* text) {
    return allocated([text] { return zavtestStrdupReally(text); });
}

int zavtestVasprintf(char** text, const char* format, va_list arguments) {
    int length = -1;
    allocated([&] {
        length = zavtestVasprintfReally(text, format, arguments);
        return length < 0 ? nullptr : *text;
    });
    return length;
}

void zavtestFree(void* block) {
    release(block);
}

void* operator new(std::size_t size) {
    return newBlockOrThrow(size);
}
void* operator new[](std::size_t size) {
    return newBlockOrThrow(size);
}
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return newBlock(size);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
    return newBlock(size);
}
void operator delete(void* block) noexcept {
    release(block);
}
void operator delete[](void* block) noexcept {
    release(block);
}
void operator delete(void* block, std::size_t /*size*/) noexcept {
    release(block);
}
void operator delete[](void* block, std::size_t /*size*/) noexcept {
    release(block);
}

namespace zavtest {

FailingAllocation::FailingAllocation(int nth) {
    untilFailure = nth;
}

FailingAllocation::~FailingAllocation() {
    untilFailure = 0;
}

bool FailingAllocation::happened() const {
    return untilFailure == 0;
}

long liveBlocks() {
    return live;
}

std::size_t lastMallocSize() {
    return lastMalloc;
}

}  // namespace zavtest
