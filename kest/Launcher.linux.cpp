#include "kest/Launcher.h"

#include <cerrno>
#include <csignal>
#include <new>
#include <optional>

#include "kest/Descriptors.linux.h"
#include "kest/ExitStatus.linux.h"
#include "kest/KeptProcess.linux.h"
#include "kest/SpawnRequest.linux.h"

namespace kest {

namespace {

// A child of the host itself.
class SpawnedProcess final : public Process {
  public:
    SpawnedProcess() = default;
    ~SpawnedProcess() override { wait(); }

    int start(const SpawnRequest& request) {
        const int error = request.start(pid_);
        if (error != 0) return error;
        status_.reset();
        // At once, before another thread of the host can take the child away.
        pidDescriptor_ = openPidDescriptor(pid_);
        return 0;
    }

    int wait() override {
        if (!status_) status_ = pidDescriptor_.isOpen() ? waitForChild(pidDescriptor_) : waitForChild(pid_);
        pidDescriptor_.close();
        return *status_;
    }

  private:
    pid_t pid_ = 0;
    Descriptor pidDescriptor_;
    // Empty while there is something to wait for.
    std::optional<int> status_ = unknownExitStatus;
};

// Where SIGCHLD is ignored or handled, children vanish together with their status.
bool childrenKeepTheirStatus() {
    struct sigaction current = {};
    sigaction(SIGCHLD, nullptr, &current);
    return current.sa_handler == SIG_DFL && (current.sa_flags & SA_NOCLDWAIT) == 0;
}

bool succeeded(int error) {
    if (error == ENOMEM) throw std::bad_alloc();
    return error == 0;
}

template <class Kind>
std::unique_ptr<Process> startAs(const SpawnRequest& request) {
    auto process = std::make_unique<Kind>();
    if (!succeeded(process->start(request))) return nullptr;
    return process;
}

}  // namespace

StartedProgram startProgram(const Program& program) {
    StartedProgram started;
    Descriptor writeEnd;
    if (!succeeded(openPipe(started.output, writeEnd))) return {};
    const SpawnRequest request(program, writeEnd);
    started.process =
        childrenKeepTheirStatus() ? startAs<SpawnedProcess>(request) : startAs<KeptProcess>(request);
    return started;
}

}  // namespace kest
