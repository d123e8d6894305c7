#include "toolkit/machine/sandbox/WorkerProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <limits>
#include <system_error>
#include <thread>

#include "kest/Retry.h"

namespace toolkit {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds kMaxTimeToDie{200};
constexpr milliseconds kWaitInterval{2};

[[noreturn]] void fail(const char* call) {
    throw std::system_error(errno, std::generic_category(), call);
}

std::string describe(int status) {
    if (WIFSIGNALED(status)) return "it died of signal " + std::to_string(WTERMSIG(status));
    return "it ended with status " + std::to_string(WEXITSTATUS(status));
}

[[noreturn]] void runChild(const std::function<void(int pipe)>& work, int pipe, pid_t parent) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(null, stream);
    work(pipe);
    ::_exit(1);
}

}  // namespace

WorkerProcess::WorkerProcess(const std::function<void(int pipe)>& work) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
    pipe_ = kest::Descriptor(ends[0]);
    const kest::Descriptor childEnd(ends[1]);
    const pid_t self = ::getpid();
    process_ = ::fork();
    if (process_ < 0) fail("fork");
    if (process_ == 0) {
        pipe_.close();
        runChild(work, childEnd.number(), self);
    }
    ::fcntl(pipe_.number(), F_SETFL, O_NONBLOCK);
}

WorkerProcess::~WorkerProcess() {
    kill();
}

bool WorkerProcess::waitForInput(Clock::time_point deadline) const {
    for (;;) {
        const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
        const auto timeout = std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max());
        pollfd input{pipe_.number(), POLLIN, 0};
        const int ready = ::poll(&input, 1, static_cast<int>(timeout));
        if (ready > 0) return true;
        if (ready == 0 && left <= timeout) return false;
        if (ready < 0 && errno != EINTR) fail("poll");
    }
}

std::string_view WorkerProcess::receive() {
    const ssize_t count =
        kest::retryInterrupted([&] { return ::read(pipe_.number(), buffer_.data(), buffer_.size()); });
    const auto size = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
    received_ += size;
    return {buffer_.data(), size};
}

std::string WorkerProcess::drain() {
    std::string bytes;
    for (std::string_view piece = receive(); !piece.empty(); piece = receive()) bytes += piece;
    return bytes;
}

void WorkerProcess::kill() {
    if (process_ < 0) return;
    ::kill(process_, SIGKILL);
    const Clock::time_point end = Clock::now() + kMaxTimeToDie;
    while (::waitpid(process_, nullptr, WNOHANG) == 0 && Clock::now() < end)
        std::this_thread::sleep_for(kWaitInterval);
    process_ = -1;
}

std::string WorkerProcess::join() {
    int status = 0;
    kest::retryInterrupted([&] { return ::waitpid(process_, &status, 0); });
    process_ = -1;
    return describe(status);
}

}  // namespace toolkit
