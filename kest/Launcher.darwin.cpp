#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <new>

#include "kest/Launcher.h"
#include "kest/Retry.h"
#include "kest/StandardStreams.h"

namespace kest {

namespace {

constexpr int signalOffset = 128;

class SpawnedProcess final : public Process {
  public:
    SpawnedProcess() = default;
    ~SpawnedProcess() override { wait(); }

    int endDescriptor() const override { return -1; }

    void started(pid_t pid) { pid_ = pid; }

    int wait() override {
        if (pid_ <= 0) return status_;
        int status = 0;
        const pid_t ended = retryInterrupted([&] { return waitpid(pid_, &status, 0); });
        if (ended == pid_)
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : signalOffset + WTERMSIG(status);
        pid_ = 0;
        return status_;
    }

  private:
    pid_t pid_ = 0;
    int status_ = -1;
};

Descriptor closeOnExec(int number) {
    Descriptor descriptor(moveAboveStandardStreams(number));
    if (descriptor.isOpen()) fcntl(descriptor.number(), F_SETFD, FD_CLOEXEC);
    return descriptor;
}

int openPipe(Descriptor& readEnd, Descriptor& writeEnd) {
    const ScopedStreamReservation taken;
    if (taken.error() != 0) return taken.error();
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) return errno;
    readEnd = closeOnExec(ends[0]);
    writeEnd = closeOnExec(ends[1]);
    return readEnd.isOpen() && writeEnd.isOpen() ? 0 : EMFILE;
}

int prepare(posix_spawn_file_actions_t& actions, posix_spawnattr_t& attributes, int output) {
    sigset_t none;
    sigset_t all;
    sigemptyset(&none);
    sigfillset(&all);
    constexpr short flags = POSIX_SPAWN_CLOEXEC_DEFAULT | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF;
    int error = posix_spawnattr_setflags(&attributes, flags);
    if (error == 0) error = posix_spawnattr_setsigmask(&attributes, &none);
    if (error == 0) error = posix_spawnattr_setsigdefault(&attributes, &all);
    if (error == 0)
        error = posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    if (error == 0) error = posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    if (error != 0) return error;
    return hostHasStream(STDERR_FILENO)
               ? posix_spawn_file_actions_addinherit_np(&actions, STDERR_FILENO)
               : posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
}

int spawn(const Program& program, int output, pid_t& pid) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    if (const int error = posix_spawn_file_actions_init(&actions)) return error;
    int error = posix_spawnattr_init(&attributes);
    if (error == 0) {
        error = prepare(actions, attributes, output);
        if (error == 0) {
            error = posix_spawn(&pid, program.arguments[0], &actions, &attributes,
                                const_cast<char* const*>(program.arguments),
                                const_cast<char* const*>(program.environment));
        }
        posix_spawnattr_destroy(&attributes);
    }
    posix_spawn_file_actions_destroy(&actions);
    return error;
}

StartedProgram notStarted(int error) {
    if (error == ENOMEM) throw std::bad_alloc();
    StartedProgram none;
    none.error = error;
    return none;
}

}  // namespace

StartedProgram startProgram(const Program& program) {
    StartedProgram started;
    Descriptor writeEnd;
    if (const int error = openPipe(started.output, writeEnd)) return notStarted(error);
    auto process = std::make_unique<SpawnedProcess>();
    pid_t pid = 0;
    if (const int error = spawn(program, writeEnd.number(), pid)) return notStarted(error);
    process->started(pid);
    started.process = std::move(process);
    return started;
}

}  // namespace kest
