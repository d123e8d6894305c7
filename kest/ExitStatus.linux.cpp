#include "kest/ExitStatus.linux.h"

#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "kest/Retry.h"

namespace kest {

namespace {

constexpr int signalOffset = 128;

}  // namespace

// By the bare system call: the function of the C library notes in the thread's memory that it may be cancelled there.
int waitForChild(pid_t pid) {
    siginfo_t info = {};
    const long result =
        retryInterrupted([&] { return syscall(SYS_waitid, P_PID, pid, &info, WEXITED, nullptr); });
    if (result < 0) return unknownExitStatus;
    return info.si_code == CLD_EXITED ? info.si_status : signalOffset + info.si_status;
}

}  // namespace kest
