#include "kest/CancelSignal.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>

namespace kest {

namespace {

// The first of the real-time signals, which the C library keeps for itself. Its own functions leave it out of
// every mask.
constexpr int cancelSignal = 32;

void setMask(int how) {
    const std::uint64_t mask = std::uint64_t{1} << (cancelSignal - 1);
    syscall(SYS_rt_sigprocmask, how, &mask, nullptr, sizeof mask);
}

}  // namespace

void holdCancelSignal() {
    setMask(SIG_BLOCK);
}

void releaseCancelSignal() {
    setMask(SIG_UNBLOCK);
}

}  // namespace kest
