#include "bench/peers/BareSpawn.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <vector>

namespace zavbench {

bool spawnBare(const std::string& path, const std::string& argument) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return false;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    char* argv[] = {const_cast<char*>(path.c_str()), const_cast<char*>(argument.c_str()), nullptr};
    pid_t child = 0;
    const int error = ::posix_spawn(&child, path.c_str(), &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    std::vector<char> block(64 << 10);
    while (error == 0 && ::read(ends[0], block.data(), block.size()) > 0) {
    }
    ::close(ends[0]);
    int status = -1;
    if (error == 0) ::waitpid(child, &status, 0);
    return error == 0 && status == 0;
}

bool makeFile(const std::string& path) {
    const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    if (file < 0) return false;
    const bool written = ::write(file, path.data(), path.size()) > 0;
    return ::close(file) == 0 && written;
}

}  // namespace zavbench
