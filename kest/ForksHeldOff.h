#pragma once

#include "kest/SignalsBlocked.h"

namespace kest {

// While one lives, no other thread forks: what this thread holds, be it a lock of the C library, would stay
// locked in the child for ever. For moments only, and one at a time in the process.
class ForksHeldOff {
  public:
    ForksHeldOff();
    ~ForksHeldOff();
    ForksHeldOff(const ForksHeldOff&) = delete;
    ForksHeldOff& operator=(const ForksHeldOff&) = delete;

  private:
    // A handler that forks in this very thread would wait for ever.
    SignalsBlocked signals_;
};

}  // namespace kest
