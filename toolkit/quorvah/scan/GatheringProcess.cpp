#include "toolkit/quorvah/scan/GatheringProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <cstring>
#include <new>
#include <optional>
#include <string_view>
#include <system_error>

#include "kest/Retry.h"
#include "toolkit/machine/files/WriteAll.h"
#include "toolkit/quorvah/report/OutputDocument.h"
#include "toolkit/quorvah/scan/GatheringSandbox.h"

namespace toolkit::quorvah {

namespace {

using Clock = GatheringProcess::Clock;

[[noreturn]] void fail(const char* call) {
    throw std::system_error(errno, std::generic_category(), call);
}

// Of a group whose instances do not fit into memory.
GroupResult outOfMemory() {
    GroupResult result;
    result.state = GroupState::Unread;
    result.reason = "memory";
    return result;
}

// Gathers a group and sends its result. Returns whether the result could be sent.
bool gatherAndSend(const Group& group, GatheringContext& context, const Prepare& prepare, int pipe,
                   SharedBuffer& xml, Clock::time_point deadline) {
    try {
        GroupData data(group);
        gatherGroup(context, data, prepare, deadline);
        const GroupResult result = render(data, context.options().pretty);
        const std::optional<std::uint64_t> place = xml.append(result.xml);
        return place && writeAll(pipe, toFrame(result, *place));
    } catch (const std::bad_alloc&) {
        context.limitTime({});
    }
    return writeAll(pipe, toFrame(outOfMemory(), xml.append({}).value_or(0)));
}

// Writes the length of a text and the text.
bool writeText(int pipe, const std::string& text) {
    const std::uint64_t length = text.size();
    return writeAll(pipe, {reinterpret_cast<const char*>(&length), sizeof length}) && writeAll(pipe, text);
}

// Runs in the child. Its standard streams are replaced: whoever waits for the end of the scanner's output must not wait
// for a child that hangs in the kernel.
[[noreturn]] void runChild(GatheringContext& context, std::span<const Group* const> groups,
                           const Prepare& prepare, int pipe, SharedBuffer& xml, pid_t parent,
                           const GatheringProcess::Deadline& deadline) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(null, stream);
    const std::string missing = enterGatheringSandbox();
    if (!writeText(pipe, missing)) ::_exit(1);
    if (!missing.empty() && !context.options().sandboxOptional) ::_exit(1);
    for (const Group* const group : groups) {
        if (!gatherAndSend(*group, context, prepare, pipe, xml, deadline())) ::_exit(1);
    }
    ::_exit(0);
}

}  // namespace

GatheringProcess::GatheringProcess(GatheringContext& context, std::span<const Group* const> groups,
                                   const Prepare& prepare, const Deadline& deadline) {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
    pipe_ = kest::Descriptor(ends[0]);
    const kest::Descriptor childEnd(ends[1]);
    const pid_t self = ::getpid();
    process_ = ::fork();
    if (process_ < 0) fail("fork");
    if (process_ == 0) {
        pipe_.close();
        runChild(context, groups, prepare, childEnd.number(), xml_, self, deadline);
    }
}

GatheringProcess::~GatheringProcess() {
    if (process_ < 0) return;
    // A child that hangs in the kernel dies only when the kernel returns, so nothing waits for it here.
    ::kill(process_, SIGKILL);
    ::waitpid(process_, nullptr, WNOHANG);
}

std::string GatheringProcess::missingFromSandbox() {
    std::uint64_t length = 0;
    while (received_.size() < sizeof length) {
        if (!receive()) return {};  // next() reports the death of the child
    }
    std::memcpy(&length, received_.data(), sizeof length);
    while (received_.size() < sizeof length + length) {
        if (!receive()) return {};
    }
    std::string text = received_.substr(sizeof length, length);
    received_.erase(0, sizeof length + length);
    return text;
}

const char* GatheringProcess::next(Clock::time_point deadline, GroupResult& result) {
    for (;;) {
        const std::size_t length = frameLength(received_);
        if (length > 0 && received_.size() >= length) {
            const bool read = readFrame(std::string_view(received_).substr(0, length), xml_, result);
            received_.erase(0, length);
            return read ? nullptr : "failed";
        }
        if (!waitForInput(deadline)) return "timeout";
        if (!receive()) return "failed";
    }
}

void GatheringProcess::join(Clock::time_point deadline) {
    while (waitForInput(deadline)) {
        if (receive()) continue;
        ::waitpid(process_, nullptr, 0);
        process_ = -1;
        return;
    }
}

bool GatheringProcess::waitForInput(Clock::time_point deadline) const {
    for (;;) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd input{pipe_.number(), POLLIN, 0};
        const int ready = ::poll(&input, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
        if (ready > 0) return true;
        if (ready == 0 && left <= 0) return false;
        if (ready < 0 && errno != EINTR) fail("poll");
    }
}

// Returns false when the child has ended.
bool GatheringProcess::receive() {
    std::array<char, 4096> buffer;
    const ssize_t count =
        kest::retryInterrupted([&] { return ::read(pipe_.number(), buffer.data(), buffer.size()); });
    if (count > 0) received_.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
}

}  // namespace toolkit::quorvah
