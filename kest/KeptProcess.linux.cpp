#include "kest/KeptProcess.linux.h"

#include <sched.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <cerrno>

namespace kest {

namespace {

// Blocks all signals in the calling thread, so that a thread started meanwhile never runs a handler of the
// host.
class SignalBlock {
  public:
    SignalBlock() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    SignalBlock(const SignalBlock&) = delete;
    SignalBlock& operator=(const SignalBlock&) = delete;
    ~SignalBlock() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

  private:
    sigset_t before_ = {};
};

}  // namespace

int KeptProcess::start(const SpawnRequest& request) {
    request_ = &request;
    {
        const SignalBlock block;
        if (const int error = pthread_create(&thread_, nullptr, runThread, this)) return error;
    }
    threadRuns_ = true;
    startError_.wait(notYet);
    return startError_;
}

int KeptProcess::wait() {
    if (threadRuns_) pthread_join(thread_, nullptr);
    threadRuns_ = false;
    return status_;
}

// While the keeper lives, this thread does nothing but wait: both use the same thread-local memory.
void* KeptProcess::runThread(void* self) {
    auto& kept = *static_cast<KeptProcess*>(self);
    const int keeper = clone(runKeeper, kept.stack_.get() + stackSize, CLONE_VM, self);
    if (keeper < 0) {
        kept.report(errno);
        return nullptr;
    }
    // ECHILD: the host waits for whatever there is, and the keeper has ended.
    while (waitpid(keeper, nullptr, __WALL) < 0 && errno != ECHILD) {
    }
    // Only a keeper that was killed has not reported by itself.
    kept.report(ECHILD);
    return nullptr;
}

int KeptProcess::runKeeper(void* self) {
    static_cast<KeptProcess*>(self)->keep();
    return 0;
}

void KeptProcess::keep() {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != host_) return;
    // Of the copies that the keeper has: the host's own dispositions and descriptors stay as they are.
    struct sigaction byDefault = {};
    byDefault.sa_handler = SIG_DFL;
    sigaction(SIGCHLD, &byDefault, nullptr);
    pid_t pid = 0;
    const int error = request_->start(pid);
    // A pipe that stayed open here would seem never to end, to the host as to the program.
    closefrom(0);
    report(error);
    if (error == 0) status_ = waitForChild(pid);
}

void KeptProcess::report(int error) {
    int expected = notYet;
    if (startError_.compare_exchange_strong(expected, error)) startError_.notify_one();
}

}  // namespace kest
