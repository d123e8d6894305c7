#include "kest/KeptProcess.linux.h"

#include <poll.h>
#include <sched.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>

#include "kest/Descriptors.linux.h"
#include "kest/Retry.h"
#include "kest/SharedMemory.linux.h"
#include "kest/SignalsBlocked.h"

namespace kest {

namespace {

// By the bare system call: see keep().
bool send(int descriptor, int report) {
    return syscall(SYS_write, descriptor, &report, sizeof report) == sizeof report;
}

}  // namespace

// While the keeper starts the program, it uses the thread-local memory of this thread. So this one does nothing
// meanwhile, not even run a handler of the host.
int KeptProcess::start(const SpawnRequest& request) {
    request_ = &request;
    Descriptor keepersEnd;
    if (const int error = openPipe(reports_, keepersEnd)) return error;
    keepersEnd_ = keepersEnd.number();
    const SignalsBlocked block;
    if (const int error = startKeeper()) return error;
    keepersEnd.close();
    int error = 0;
    if (!receive(error)) error = ECHILD;
    if (error != 0) takeKeeperAway();
    return error;
}

// An emulator of another processor knows neither a process that shares memory nor one that ends without a signal.
int KeptProcess::startKeeper() {
    const int kinds[] = {CLONE_VM, 0, SIGCHLD};
    int error = EINVAL;
    for (const int kind : kinds) {
        if (kind == CLONE_VM && !memoryCanBeShared()) continue;
        keeper_ = clone(runKeeper, stack_.get() + stackSize, kind, this);
        if (keeper_ > 0) return 0;
        error = errno;
        if (error != EINVAL) break;
    }
    return error;
}

// The keeper first: it ends right after its last report, and so this thread is woken only once.
int KeptProcess::wait() {
    if (keeper_ <= 0) return status_;
    takeKeeperAway();
    if (!hasReport() || !receive(status_)) status_ = unknownExitStatus;
    reports_.close();
    return status_;
}

// Not so when the keeper was killed, even where a process that the host forked still has its end of the pipe.
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

void KeptProcess::takeKeeperAway() {
    // Fails when the host has waited for any child and so for the keeper, which has ended then.
    retryInterrupted([this] { return waitpid(keeper_, nullptr, __WALL); });
    keeper_ = 0;
}

int KeptProcess::runKeeper(void* self) {
    static_cast<const KeptProcess*>(self)->keep();
    return 0;
}

// From the first report on, the host's thread goes on beside the keeper: then nothing may be used that has a place in
// thread-local memory, as most functions of the C library have.
void KeptProcess::keep() const {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != host_) return;
    // Of the copies that the keeper has: the host's own dispositions and descriptors stay as they are.
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &byDefault, nullptr);
    pid_t pid = 0;
    const int error = request_->start(pid);
    // A pipe of the host that stayed open here would seem never to end.
    constexpr int reports = 0;
    dup2(keepersEnd_, reports);
    closefrom(reports + 1);
    if (send(reports, error) && error == 0) send(reports, waitForChild(pid));
}

}  // namespace kest
