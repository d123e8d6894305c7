#pragma once

#include <array>
#include <csignal>

namespace zavcli {

// The signals with which people and service managers end a program.
constexpr std::array kEndingSignals = {SIGINT, SIGTERM, SIGHUP};

// While it lives, the first of each of those signals does not end this process but its scanner: the scan fails, and the
// temporary files can be removed. A second one ends this process at once. Ignored signals stay ignored.
class InterruptGuard {
  public:
    InterruptGuard();
    ~InterruptGuard();
    InterruptGuard(const InterruptGuard&) = delete;
    InterruptGuard& operator=(const InterruptGuard&) = delete;

  private:
    std::array<struct sigaction, kEndingSignals.size()> before_{};
};

// Whether such a signal came while a guard was alive.
bool wasInterrupted();

// Ends this process by that signal, so that its parent sees what ended it.
[[noreturn]] void endByInterrupt();

}  // namespace zavcli
