#include "bench/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iostream>

namespace zavbench {

namespace {

[[noreturn]] void giveUp(const std::string& what) {
    std::cerr << "zav_bench: " << what << '\n';
    std::exit(1);
}

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

std::string readToEnd(int descriptor) {
    std::string text;
    char block[65536];
    for (;;) {
        const ssize_t count = ::read(descriptor, block, sizeof block);
        if (count <= 0) return text;
        text.append(block, static_cast<std::size_t>(count));
    }
}

}  // namespace

Finished runProcess(const std::vector<std::string>& arguments, bool quiet) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) giveUp("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    if (quiet) posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    pid_t child = 0;
    if (::posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ) != 0) {
        giveUp("cannot start " + arguments[0]);
    }
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    Finished finished{};
    finished.output = readToEnd(ends[0]);
    ::close(ends[0]);
    rusage usage{};
    ::wait4(child, &finished.status, 0, &usage);
    finished.wallSeconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    finished.cpuSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    return finished;
}

std::string besideThis(const std::string& name) {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

}  // namespace zavbench
