// Memory that runs out on demand. Link Allocations.cpp, which replaces operator new, and set the linker's
// options
// --wrap=malloc, --wrap=aligned_alloc, --wrap=strdup and --wrap=free.
#pragma once

#include <cstddef>

namespace zavtest {

// One allocation of this thread fails while this lives: the nth from here on, counted from 1.
class FailingAllocation {
  public:
    explicit FailingAllocation(int nth);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    // Whether it came to the allocation that fails.
    bool happened() const;
};

// The blocks that this thread has allocated, less those that it has released.
long liveBlocks();

// What this thread asked of malloc last, in bytes.
std::size_t lastMallocSize();

}  // namespace zavtest
