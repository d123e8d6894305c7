// Memory that runs out on demand, and is counted. Use zav_test_allocations() of Support.cmake: it replaces
// operator new and wraps the allocating functions of the C library that the library calls. What other
// libraries allocate by themselves neither fails nor counts.
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
