#include "kest/KeptProcess.linux.h"

#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>

#include "kest/MemorySharing.linux.h"
#include "kest/Pipe.linux.h"
#include "kest/Retry.h"
#include "kest/ScopedSignalBlock.h"

namespace kest {

namespace {

// Uses the system call directly; keep() says why.
bool send(int descriptor, int report) {
    return syscall(SYS_write, descriptor, &report, sizeof report) == sizeof report;
}

}  // namespace

// The keeper uses this thread's thread-local memory while it starts the program. Until then this thread only waits,
// with all signals blocked so that no handler of the host runs.
int KeptProcess::start(const SpawnRequest& request) {
    request_ = &request;
    Descriptor keepersEnd;
    if (const int error = openPipe(reports_, keepersEnd)) return error;
    keepersEnd_ = keepersEnd.number();
    const ScopedSignalBlock block;
    if (const int error = startKeeper()) return error;
    keepersEnd.close();
    int error = 0;
    if (!receive(error)) error = ECHILD;
    if (error != 0) reapKeeper();
    return error;
}

// User-mode emulators may support neither processes that share memory nor processes that end without a signal.
int KeptProcess::startKeeper() {
    const int kinds[] = {CLONE_VM, 0, SIGCHLD};
    int error = EINVAL;
    for (const int kind : kinds) {
        if (kind == CLONE_VM && !canShareMemory()) continue;
        keeper_ = clone(runKeeper, stack_.get() + stackSize, kind, this);
        if (keeper_ > 0) return 0;
        error = errno;
        if (error != EINVAL) break;
    }
    return error;
}

// Waits for the keeper before reading: it ends right after its last report, so this thread is woken only once.
int KeptProcess::wait() {
    if (keeper_ <= 0) return status_;
    reapKeeper();
    if (!hasReport() || !receive(status_)) status_ = unknownExitStatus;
    reports_.close();
    return status_;
}

// False when the keeper was killed before it reported. Reading could then block: a process that the host forked may
// have inherited the writing end of the pipe.
bool KeptProcess::hasReport() const {
    pollfd reports = {reports_.number(), POLLIN, 0};
    return poll(&reports, 1, 0) > 0 && (reports.revents & POLLIN) != 0;
}

// False when the keeper was killed.
bool KeptProcess::receive(int& report) const {
    const long length =
        retryInterrupted([&] { return syscall(SYS_read, reports_.number(), &report, sizeof report); });
    return length == sizeof report;
}

void KeptProcess::reapKeeper() {
    // An error means that the host has already reaped the keeper by waiting for any child.
    retryInterrupted([this] { return waitpid(keeper_, nullptr, __WALL); });
    keeper_ = 0;
}

int KeptProcess::runKeeper(void* self) {
    static_cast<const KeptProcess*>(self)->keep();
    return 0;
}

// After the first report the host's thread runs again and shares its thread-local memory with the keeper. From then on
// the keeper makes only bare system calls, as most functions of the C library use thread-local memory.
void KeptProcess::keep() const {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != host_) return;
    // Signal dispositions and descriptors are the keeper's own copies; the host's do not change.
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &byDefault, nullptr);
    pid_t pid = 0;
    const int error = request_->start(pid);
    // A pipe of the host that the keeper kept open would never reach its end.
    constexpr int reports = 0;
    dup2(keepersEnd_, reports);
    closefrom(reports + 1);
    if (send(reports, error) && error == 0) send(reports, waitForChild(pid));
}

}  // namespace kest
