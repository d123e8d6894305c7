// Makes allocations fail and counts them. Use zav_test_allocations() of Support.cmake, which replaces operator new
// and wraps the allocating functions of the C library that the library calls. Allocations inside other libraries
// neither fail nor count.
#pragma once

#include <cstddef>

namespace zavtest {

// Makes one allocation of this thread fail: the nth from now on, counted from 1.
class FailingAllocation {
  public:
    explicit FailingAllocation(int nth);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation&) = delete;
    FailingAllocation& operator=(const FailingAllocation&) = delete;

    // Whether that allocation was reached.
    bool happened() const;
};

// The number of blocks that this thread has allocated minus those that it has released.
long liveBlocks();

// The size of this thread's last malloc call, in bytes.
std::size_t lastMallocSize();

}  // namespace zavtest
