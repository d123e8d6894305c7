#pragma once

#include "kest/ScopedSignalBlock.h"

namespace kest {

// Makes other threads wait before they fork. A lock that this thread holds, such as one of the C library, would stay
// locked in the child for ever. Only one of these exists at a time in the process; keep it for moments only.
class ScopedForkBlock {
  public:
    ScopedForkBlock();
    ~ScopedForkBlock();
    ScopedForkBlock(const ScopedForkBlock&) = delete;
    ScopedForkBlock& operator=(const ScopedForkBlock&) = delete;

  private:
    // A signal handler that forks in this thread would wait for ever.
    ScopedSignalBlock signals_;
};

}  // namespace kest
