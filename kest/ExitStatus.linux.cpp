#include "kest/ExitStatus.linux.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <sys/wait.h>

#include <cerrno>
#include <cstdint>

namespace kest {

namespace {

constexpr int signalOffset = 128;

// False when somebody else took the child away.
bool take(idtype_t kind, id_t id, siginfo_t& info) {
    int result = 0;
    do {
        result = waitid(kind, id, &info, WEXITED);
    } while (result != 0 && errno == EINTR);
    return result == 0;
}

int statusFrom(const siginfo_t& info) {
    return info.si_code == CLD_EXITED ? info.si_status : signalOffset + info.si_status;
}

int statusFrom(int waitStatus) {
    return WIFEXITED(waitStatus) ? WEXITSTATUS(waitStatus) : signalOffset + WTERMSIG(waitStatus);
}

// The kernel's struct pidfd_info in its first version. Kernels before 6.13 do not know it, and those
// before 6.15 forget the exit code with the process.
struct PidInfo {
    std::uint64_t mask;
    std::uint64_t cgroup;
    std::uint32_t ids[11];
    std::int32_t exitCode;
};
static_assert(sizeof(PidInfo) == 64);

constexpr std::uint64_t exitCodeIsKnown = 1U << 3U;
constexpr unsigned long getInfo = _IOWR(0xFF, 11, PidInfo);

// What the kernel remembers of a process that somebody else took away. Taking away is not done at one stroke:
// for a moment the process is no child any more, and its exit code not yet known; and a question that falls
// into the last step is answered as if there were no process, though the next one finds the exit code.
int rememberedStatus(int pidDescriptor) {
    constexpr int mostRefusals = 3;
    constexpr int milliseconds = 10;
    for (int refusals = 0; refusals < mostRefusals;) {
        PidInfo info = {};
        info.mask = exitCodeIsKnown;
        const bool answered = ioctl(pidDescriptor, getInfo, &info) == 0;
        if (answered && (info.mask & exitCodeIsKnown) != 0) return statusFrom(info.exitCode);
        if (!answered && errno != ESRCH) return unknownExitStatus;
        if (!answered) ++refusals;
        pollfd hangUp = {pidDescriptor, 0, 0};
        poll(&hangUp, 1, milliseconds);
    }
    return unknownExitStatus;
}

}  // namespace

int waitForChild(pid_t pid) {
    siginfo_t info = {};
    return take(P_PID, static_cast<id_t>(pid), info) ? statusFrom(info) : unknownExitStatus;
}

int waitForChild(const Descriptor& pidDescriptor) {
    siginfo_t info = {};
    if (take(P_PIDFD, static_cast<id_t>(pidDescriptor.number()), info)) return statusFrom(info);
    return rememberedStatus(pidDescriptor.number());
}

}  // namespace kest
