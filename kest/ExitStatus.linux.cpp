#include "kest/ExitStatus.linux.h"

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kest/Retry.h"

namespace kest {

namespace {

constexpr int signalOffset = 128;

}  // namespace

// Uses the system call directly: the C library's waitid() is a cancellation point and writes to thread-local memory.
int waitForChild(pid_t pid) {
    siginfo_t info = {};
    const long result =
        retryInterrupted([&] { return syscall(SYS_waitid, P_PID, pid, &info, WEXITED, nullptr); });
    if (result < 0) return unknownExitStatus;
    return info.si_code == CLD_EXITED ? info.si_status : signalOffset + info.si_status;
}

}  // namespace kest
