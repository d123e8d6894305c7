#include "toolkit/quorvis/evaluation/WorkerProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <new>
#include <system_error>
#include <thread>

namespace toolkit::quorvis {

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

}  // namespace

WorkerProcess::WorkerProcess(const std::function<void(int pipe, WorkerOutput& output)>& work) {
    void* const shared =
        ::mmap(nullptr, sizeof(WorkerOutput), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (shared == MAP_FAILED) fail("mmap");
    output_ = new (shared) WorkerOutput;
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
    pipe_ = kest::Descriptor(ends[0]);
    const kest::Descriptor far(ends[1]);
    const pid_t self = ::getpid();
    process_ = ::fork();
    if (process_ < 0) fail("fork");
    if (process_ == 0) runChild(work, far.number(), self);
    ::fcntl(pipe_.number(), F_SETFL, O_NONBLOCK);
}

WorkerProcess::~WorkerProcess() {
    if (process_ > 0) kill();
    ::munmap(output_, sizeof *output_);
}

void WorkerProcess::runChild(const std::function<void(int pipe, WorkerOutput& output)>& work, int pipe,
                             pid_t parent) const {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(null, stream);
    work(pipe, *output_);
    ::_exit(1);
}

bool WorkerProcess::waitForInput(std::chrono::steady_clock::duration time) const {
    const auto left = std::chrono::ceil<milliseconds>(time).count();
    pollfd input{pipe_.number(), POLLIN, 0};
    const int ready = ::poll(&input, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
    if (ready < 0 && errno != EINTR) fail("poll");
    return ready > 0;
}

std::string_view WorkerProcess::receive() {
    for (;;) {
        const ssize_t count = ::read(pipe_.number(), buffer_.data(), buffer_.size());
        if (count < 0 && errno == EINTR) continue;
        const auto size = static_cast<std::size_t>(std::max<ssize_t>(count, 0));
        received_ += size;
        return {buffer_.data(), size};
    }
}

void WorkerProcess::kill() {
    ::kill(process_, SIGKILL);
    const auto end = std::chrono::steady_clock::now() + kMaxTimeToDie;
    while (::waitpid(process_, nullptr, WNOHANG) == 0 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(kWaitInterval);
    process_ = -1;
}

std::string WorkerProcess::join() {
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR) {
    }
    process_ = -1;
    return describe(status);
}

std::string WorkerProcess::rest() {
    std::string bytes;
    for (std::string_view piece = receive(); !piece.empty(); piece = receive()) bytes += piece;
    // Bytes that are in the output although they came through the pipe: the child may die before it counts them as sent.
    const std::uint64_t twice = received_ - std::min<std::uint64_t>(output_->sent, received_);
    const std::size_t used = std::min<std::size_t>(output_->used, output_->bytes.size());
    if (twice < used) bytes.append(output_->bytes.data() + twice, used - twice);
    return bytes;
}

}  // namespace toolkit::quorvis
