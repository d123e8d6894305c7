#include "cli/Interrupt.h"

#include <unistd.h>

namespace zavcli {

namespace {

constexpr int kInterruptedStatus = 128 + SIGINT;

volatile std::sig_atomic_t interrupted = 0;

void note(int /*signal*/) {
    interrupted = 1;
}

}  // namespace

InterruptGuard::InterruptGuard() {
    sigaction(SIGINT, nullptr, &before_);
    if (before_.sa_handler == SIG_IGN) return;
    struct sigaction action {};
    action.sa_handler = note;
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(SIGINT, &action, nullptr);
}

InterruptGuard::~InterruptGuard() {
    sigaction(SIGINT, &before_, nullptr);
}

bool wasInterrupted() {
    return interrupted != 0;
}

void endByInterrupt() {
    struct sigaction action {};
    action.sa_handler = SIG_DFL;
    sigaction(SIGINT, &action, nullptr);
    raise(SIGINT);
    _exit(kInterruptedStatus);
}

}  // namespace zavcli
