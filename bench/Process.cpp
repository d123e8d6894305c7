#include "bench/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>
#include <thread>

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

// The number in the line of a file in /proc that begins with this name; 0 if there is none.
double numberIn(const std::string& file, std::string_view name) {
    std::ifstream in(file);
    std::string line;
    while (std::getline(in, line)) {
        if (line.starts_with(name)) return std::atof(line.c_str() + name.size());
    }
    return 0;
}

double memoryOf(pid_t process) {
    const std::string own = "/proc/" + std::to_string(process);
    double bytes = 1024 * numberIn(own + "/smaps_rollup", "Pss:");
    std::ifstream children(own + "/task/" + std::to_string(process) + "/children");
    for (pid_t child = 0; children >> child;) bytes += memoryOf(child);
    return bytes;
}

}  // namespace

Observed observeProcess(const std::vector<std::string>& arguments) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<char*> argv;
    for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    pid_t child = 0;
    if (::posix_spawnp(&child, argv[0], &actions, nullptr, argv.data(), environ) != 0)
        giveUp("cannot start " + arguments[0]);
    posix_spawn_file_actions_destroy(&actions);
    Observed observed{};
    for (siginfo_t ended{}; ended.si_pid == 0;) {
        ::waitid(P_PID, static_cast<id_t>(child), &ended, WEXITED | WNOHANG | WNOWAIT);
        observed.peakBytes = std::max(observed.peakBytes, memoryOf(child));
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    observed.bytesRead = numberIn("/proc/" + std::to_string(child) + "/io", "rchar:");
    ::waitpid(child, &observed.status, 0);
    return observed;
}

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
