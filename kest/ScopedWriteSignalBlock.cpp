#include "kest/ScopedWriteSignalBlock.h"

#include <cerrno>
#include <initializer_list>

namespace kest {

namespace {

// 0 for an error that raises no signal.
int signalOf(int error) {
    if (error == EFBIG) return SIGXFSZ;
    return error == EPIPE ? SIGPIPE : 0;
}

bool isPending(int signal) {
    sigset_t pending;
    sigpending(&pending);
    return sigismember(&pending, signal) == 1;
}

}  // namespace

ScopedWriteSignalBlock::ScopedWriteSignalBlock() {
    sigset_t held;
    sigemptyset(&held);
    sigaddset(&held, SIGXFSZ);
    sigaddset(&held, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &held, &previousMask_);
    sigpending(&previouslyPending_);
}

ScopedWriteSignalBlock::~ScopedWriteSignalBlock() {
    sigset_t own;
    sigemptyset(&own);
    for (const int signal : {SIGXFSZ, SIGPIPE}) {
        if (sigismember(&previousMask_, signal) == 0) sigaddset(&own, signal);
    }
    pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
}

void ScopedWriteSignalBlock::discardSignalOf(int error) const {
    const int signal = signalOf(error);
    if (signal == 0 || sigismember(&previouslyPending_, signal) == 1 || !isPending(signal)) return;
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, signal);
    int taken = 0;
    sigwait(&only, &taken);
}

}  // namespace kest
