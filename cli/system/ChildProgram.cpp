#include "cli/system/ChildProgram.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "cli/system/Failure.h"

namespace zavcli {

namespace {

[[noreturn]] void fail(const std::string& path, int error) {
    throw Failure(kExitFailed, fmt::format("{} could not be started: {}", path, systemErrorText(error)));
}

pid_t start(const std::string& path, const std::vector<std::string>& arguments, int writer) {
    std::vector<char*> argv{const_cast<char*>(path.c_str())};
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    posix_spawn_file_actions_t actions{};
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, writer, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, writer, STDERR_FILENO);
    pid_t pid = -1;
    const int error = posix_spawn(&pid, path.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(writer);
    if (error != 0) fail(path, error);
    return pid;
}

std::string readAll(int descriptor) {
    std::string text;
    std::array<char, 4096> block{};
    for (;;) {
        const ssize_t count = read(descriptor, block.data(), block.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        text.append(block.data(), static_cast<std::size_t>(count));
    }
    close(descriptor);
    return text;
}

}  // namespace

ProgramResult runProgram(const std::string& path, const std::vector<std::string>& arguments) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) fail(path, errno);
    const pid_t pid = start(path, arguments, ends[1]);
    ProgramResult result;
    result.output = readAll(ends[0]);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    result.status = WIFSIGNALED(status) ? kSignalStatusBase + WTERMSIG(status) : WEXITSTATUS(status);
    return result;
}

}  // namespace zavcli
