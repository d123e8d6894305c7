#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <new>

#include "kest/Launcher.h"

namespace kest {

namespace {

constexpr int signalOffset = 128;

class SpawnedProcess final : public Process {
  public:
    SpawnedProcess() = default;
    ~SpawnedProcess() override { wait(); }

    void started(pid_t pid) { pid_ = pid; }

    int wait() override {
        if (pid_ <= 0) return status_;
        int status = 0;
        pid_t ended = 0;
        do {
            ended = waitpid(pid_, &status, 0);
        } while (ended < 0 && errno == EINTR);
        if (ended == pid_)
            status_ = WIFEXITED(status) ? WEXITSTATUS(status) : signalOffset + WTERMSIG(status);
        pid_ = 0;
        return status_;
    }

  private:
    pid_t pid_ = 0;
    int status_ = -1;
};

// Above 2, where the host may have closed descriptors of its own.
Descriptor movedUp(int number) {
    const Descriptor low(number);
    return Descriptor(fcntl(low.number(), F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
}

int openPipe(Descriptor& readEnd, Descriptor& writeEnd) {
    int ends[2] = {-1, -1};
    if (pipe(ends) != 0) return errno;
    readEnd = movedUp(ends[0]);
    writeEnd = movedUp(ends[1]);
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
    return fcntl(STDERR_FILENO, F_GETFD) != -1
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

bool succeeded(int error) {
    if (error == ENOMEM) throw std::bad_alloc();
    return error == 0;
}

}  // namespace

StartedProgram startProgram(const Program& program) {
    StartedProgram started;
    Descriptor writeEnd;
    if (!succeeded(openPipe(started.output, writeEnd))) return {};
    auto process = std::make_unique<SpawnedProcess>();
    pid_t pid = 0;
    if (!succeeded(spawn(program, writeEnd.number(), pid))) return {};
    process->started(pid);
    started.process = std::move(process);
    return started;
}

}  // namespace kest
