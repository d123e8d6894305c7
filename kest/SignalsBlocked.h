#pragma once

#include <csignal>

namespace kest {

// Keeps all signals from the calling thread, and from threads that it starts meanwhile, so that no handler of
// the host runs there.
class SignalsBlocked {
  public:
    SignalsBlocked() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_BLOCK, &all, &before_);
    }
    // Not by setting the mask of before: that would let the C library's own signals through.
    ~SignalsBlocked() {
        sigset_t own;
        sigfillset(&own);
        for (int signal = 1; signal < NSIG; ++signal) {
            if (sigismember(&before_, signal) == 1) sigdelset(&own, signal);
        }
        pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    }
    SignalsBlocked(const SignalsBlocked&) = delete;
    SignalsBlocked& operator=(const SignalsBlocked&) = delete;

  private:
    sigset_t before_ = {};
};

}  // namespace kest
