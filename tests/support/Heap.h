// Makes allocations of the whole process fail: those of the library, of Expat and of the C and C++ libraries. Use
// zav_test_heap() of Support.cmake, which replaces malloc and related functions and so excludes sanitizers.
#pragma once

namespace zavtest {

// Whether one allocation fails or all that follow too.
enum class Shortage { Once, ForGood };

// Makes allocations of this thread fail: the nth from now on, counted from 1, or that and all later ones.
class FailingHeap {
  public:
    FailingHeap(int nth, Shortage shortage);
    ~FailingHeap();
    FailingHeap(const FailingHeap&) = delete;
    FailingHeap& operator=(const FailingHeap&) = delete;

    // Whether that allocation was reached.
    bool happened() const;
};

// Suspends a FailingHeap.
class PlentifulHeap {
  public:
    PlentifulHeap();
    ~PlentifulHeap();
    PlentifulHeap(const PlentifulHeap&) = delete;
    PlentifulHeap& operator=(const PlentifulHeap&) = delete;

  private:
    bool counting_;
};

// The number of blocks that this thread has allocated minus those that it has released.
long liveBlocks();

}  // namespace zavtest
