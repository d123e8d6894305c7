// Memory that runs out on demand, for everything in the process: the library, Expat and the C and C++
// libraries. Use zav_test_heap() of Support.cmake: it replaces malloc and its kin, so it is no company for a
// sanitizer.
#pragma once

namespace zavtest {

// How long the memory stays short.
enum class Shortage { Once, ForGood };

// Allocations of this thread fail while this lives: the nth from here on, counted from 1, or all from there.
class FailingHeap {
  public:
    FailingHeap(int nth, Shortage shortage);
    ~FailingHeap();
    FailingHeap(const FailingHeap&) = delete;
    FailingHeap& operator=(const FailingHeap&) = delete;

    // Whether it came to the allocation that fails.
    bool happened() const;
};

// There is memory again as long as this lives, for what a test does in between.
class PlentifulHeap {
  public:
    PlentifulHeap();
    ~PlentifulHeap();
    PlentifulHeap(const PlentifulHeap&) = delete;
    PlentifulHeap& operator=(const PlentifulHeap&) = delete;

  private:
    bool counting_;
};

// The blocks that this thread has allocated, less those that it has released.
long liveBlocks();

}  // namespace zavtest
