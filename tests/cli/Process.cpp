#include "tests/cli/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <utility>

namespace zavtest {

namespace {

constexpr int kCannotStart = 126;

// A pipe or a pseudo terminal: the process writes to one end, and the test reads from the other.
struct Channel {
    int reader = -1;
    int writer = -1;
};

Channel pipeChannel() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
    return {ends[0], ends[1]};
}

Channel terminalChannel(int columns) {
    winsize size{};
    size.ws_row = 24;
    size.ws_col = static_cast<unsigned short>(columns);
    Channel channel;
    if (openpty(&channel.reader, &channel.writer, nullptr, nullptr, &size) != 0)
        throw std::runtime_error("openpty");
    fcntl(channel.reader, F_SETFD, FD_CLOEXEC);
    fcntl(channel.writer, F_SETFD, FD_CLOEXEC);
    return channel;
}

void writeTo(Channel& channel, const std::string& file) {
    if (file.empty()) return;
    close(channel.writer);
    channel.writer = open(file.c_str(), O_WRONLY | O_CLOEXEC);
}

// Returns false at the end of the output. A terminal whose other side is closed returns EIO.
bool readSome(int descriptor, std::string& text) {
    std::array<char, 4096> block{};
    const ssize_t count = read(descriptor, block.data(), block.size());
    if (count > 0) text.append(block.data(), static_cast<std::size_t>(count));
    return count > 0 || (count < 0 && errno == EINTR);
}

void check(bool done, const char* what) {
    if (done) return;
    std::perror(what);
    _exit(kCannotStart);
}

}  // namespace

Process::Process(std::vector<std::string> arguments)
    : program_(ZAVTEST_COMMAND), arguments_(std::move(arguments)) {
    environment("TERM", "xterm").environment("COLUMNS", std::nullopt).environment("NO_COLOR", std::nullopt);
    environment("QUORVAH_ROOT", std::nullopt).environment("QUORVIS_ROOT", std::nullopt);
    // As if the owner of the build had started the command by sudo.
    struct stat build {};
    stat(program_.c_str(), &build);
    environment("SUDO_UID", std::to_string(build.st_uid));
}

Process& Process::program(const std::string& path) {
    program_ = path;
    return *this;
}

Process& Process::environment(const std::string& name, const std::optional<std::string>& value) {
    environment_.emplace_back(name, value);
    return *this;
}

Process& Process::directory(const std::string& path) {
    directory_ = path;
    return *this;
}

Process& Process::errorTerminal(int columns) {
    errorColumns_ = columns;
    return *this;
}

Process& Process::outputTerminal(int columns) {
    outputColumns_ = columns;
    return *this;
}

Process& Process::outputTo(const std::string& path) {
    outputFile_ = path;
    return *this;
}

Process& Process::errorTo(const std::string& path) {
    errorFile_ = path;
    return *this;
}

Process& Process::unread(int descriptor) {
    unread_ = descriptor;
    return *this;
}

Process& Process::ignoring(int signal) {
    ignored_.push_back(signal);
    return *this;
}

Process& Process::without(std::vector<int> descriptors) {
    closed_ = std::move(descriptors);
    return *this;
}

Process& Process::locationFile(const std::optional<std::string>& zavIni) {
    ownEtc_ = true;
    zavIni_ = zavIni;
    return *this;
}

Process& Process::locationFileOwner(unsigned int user, unsigned int mode) {
    iniUser_ = user;
    iniMode_ = mode;
    return *this;
}

Process& Process::user(unsigned int id) {
    user_ = id;
    return *this;
}

Process& Process::watch(std::function<void(const std::string&, int)> watcher) {
    watcher_ = std::move(watcher);
    return *this;
}

// Enters a new mount name space, so that /etc of the machine does not change; without root, also a new user name space.
void Process::enterOwnEtc() const {
    const uid_t user = geteuid();
    const gid_t group = getegid();
    check(unshare(CLONE_NEWNS | (user == 0 ? 0 : CLONE_NEWUSER)) == 0, "unshare");
    if (user != 0) {
        std::ofstream("/proc/self/setgroups") << "deny";
        std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1";
        std::ofstream("/proc/self/gid_map") << group << ' ' << group << " 1";
    }
    check(mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "mount /");
    check(mount("none", "/etc", "tmpfs", 0, "mode=0755") == 0, "mount /etc");
    std::ofstream("/etc/passwd") << "root:x:0:0:root:/root:/bin/sh\n";
    if (!zavIni_) return;
    check(mkdir("/etc/zav", 0755) == 0, "mkdir /etc/zav");
    std::ofstream("/etc/zav/zav.ini", std::ios::binary) << *zavIni_;
    check(chmod("/etc/zav/zav.ini", iniMode_) == 0, "chmod zav.ini");
    if (geteuid() == 0) check(chown("/etc/zav/zav.ini", iniUser_, iniUser_) == 0, "chown zav.ini");
}

void Process::become(int out, int err) const {
    setpgid(0, 0);
    const int null = open("/dev/null", O_RDONLY);
    check(dup2(null, STDIN_FILENO) >= 0, "standard input");
    check(dup2(out, STDOUT_FILENO) >= 0 && dup2(err, STDERR_FILENO) >= 0, "dup2");
    for (const auto& [name, value] : environment_)
        value ? setenv(name.c_str(), value->c_str(), 1) : unsetenv(name.c_str());
    if (ownEtc_) enterOwnEtc();
    check(directory_.empty() || chdir(directory_.c_str()) == 0, "chdir");
    std::vector<char*> argv{const_cast<char*>(program_.c_str())};
    for (const std::string& argument : arguments_) argv.push_back(const_cast<char*>(argument.c_str()));
    argv.push_back(nullptr);
    check(!user_ || setuid(*user_) == 0, "setuid");
    for (const int signal : ignored_) std::signal(signal, SIG_IGN);
    for (const int descriptor : closed_) close(descriptor);
    execv(program_.c_str(), argv.data());
    check(false, program_.c_str());
    _exit(kCannotStart);
}

Ended Process::run() {
    Channel err = errorColumns_ > 0 ? terminalChannel(errorColumns_) : pipeChannel();
    Channel out = outputColumns_ > 0 ? terminalChannel(outputColumns_) : pipeChannel();
    writeTo(out, outputFile_);
    writeTo(err, errorFile_);
    if (unread_ == STDOUT_FILENO) close(std::exchange(out.reader, -1));
    if (unread_ == STDERR_FILENO) close(std::exchange(err.reader, -1));
    const pid_t pid = fork();
    if (pid < 0) throw std::runtime_error("fork");
    if (pid == 0) become(out.writer, err.writer);
    close(out.writer);
    close(err.writer);

    Ended ended;
    std::array<pollfd, 2> open{{{out.reader, POLLIN, 0}, {err.reader, POLLIN, 0}}};
    while (open[0].fd >= 0 || open[1].fd >= 0) {
        poll(open.data(), open.size(), -1);
        if (open[0].revents != 0 && !readSome(out.reader, ended.out)) open[0].fd = -1;
        if (open[1].revents != 0 && !readSome(err.reader, ended.err)) open[1].fd = -1;
        if (watcher_) watcher_(ended.err, pid);
    }
    close(out.reader);
    close(err.reader);
    int status = 0;
    waitpid(pid, &status, 0);
    if (WIFEXITED(status)) ended.status = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) ended.signal = WTERMSIG(status);
    return ended;
}

}  // namespace zavtest
