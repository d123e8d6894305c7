#pragma once

#include <csignal>

namespace kest {

// Blocks all signals in the calling thread and in threads that it starts in the meantime, so that no handler of the
// host runs there.
class ScopedSignalBlock {
  public:
    ScopedSignalBlock() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    // Setting the previous mask would also unblock signals that the C library has blocked since.
    ~ScopedSignalBlock() {
        sigset_t own;
        sigfillset(&own);
        for (int signal = 1; signal < NSIG; ++signal) {
            if (sigismember(&before_, signal) == 1) sigdelset(&own, signal);
        }
        pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    }
    ScopedSignalBlock(const ScopedSignalBlock&) = delete;
    ScopedSignalBlock& operator=(const ScopedSignalBlock&) = delete;

  private:
    sigset_t before_ = {};
};

}  // namespace kest
