#pragma once

#include <csignal>

namespace zavcli {

// While it lives, the first SIGINT (Ctrl-C) does not end this process: the scanner gets it too and ends, the
// scan fails, and the temporary files can be removed. A second one ends this process at once. An ignored
// SIGINT stays ignored.
class InterruptGuard {
  public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

  private:
    struct sigaction before_ {};
};

// Whether SIGINT came while a guard was alive.
bool wasInterrupted();

// Ends this process by SIGINT, so that its parent sees what ended it.
[[noreturn]] void endByInterrupt();

}  // namespace zavcli
