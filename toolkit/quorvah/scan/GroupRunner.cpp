#include "toolkit/quorvah/scan/GroupRunner.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <exception>
#include <memory>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "kest/Descriptor.h"
#include "toolkit/machine/files/WriteAll.h"
#include "toolkit/quorvah/report/OutputDocument.h"
#include "toolkit/quorvah/scan/Confinement.h"

namespace toolkit::quorvah {

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

milliseconds since(Clock::time_point start) {
    return std::chrono::duration_cast<milliseconds>(Clock::now() - start);
}

void tellWhyNone(Report& report) {
    const char* const elsewhere = report.group().elsewhere;
    if (elsewhere != nullptr) {
        report.notApplicable(elsewhere);
    } else {
        report.unsupported();
    }
}

// No instances where there is nothing to read them from do not say that there are none.
void tellOfMissingSources(const Root& root, Report& report) {
    const std::span<const char* const> sources = report.group().sources;
    if (!report.instances().empty() || sources.empty()) return;
    if (std::ranges::any_of(sources, [&root](const char* path) { return root.exists(path); })) return;
    if (root.live()) {
        report.unread("no-source");
    } else {
        report.notApplicable("not-in-tree");
    }
}

// By when a group that begins now must be done.
using Deadline = std::function<Clock::time_point()>;

// Does not leave it to its killer to end a group that takes too long: what it has by then is kept, and the last fifth
// of its time is for making that ready.
Clock::time_point deadlineOf(const Limits& limits, Clock::time_point end) {
    const Clock::time_point now = Clock::now();
    return now + std::min<Clock::duration>(limits.group, end - now) * 4 / 5;
}

void gather(Scan& scan, Report& report, const Prepare& prepare, Clock::time_point deadline) {
    if (report.group().gather == nullptr) {
        tellWhyNone(report);
        return;
    }
    const Clock::time_point start = Clock::now();
    const int denials = scan.root().denials();
    const int excesses = scan.root().excesses();
    scan.limitTime(deadline);
    try {
        report.group().gather(scan, report);
    } catch (const OutOfTime&) {
        report.partial("timeout");
    } catch (const std::bad_alloc&) {
        report.partial("memory");
    } catch (const TooMuch&) {
        report.partial("too-large");
    } catch (const std::exception& failure) {
        report.partial("failed");
        report.warn(std::string(report.group().xmlName) + ": " + failure.what());
    }
    scan.limitTime({});
    if (scan.root().denials() > denials) report.partial("permission");
    if (report.trim() || scan.root().excesses() > excesses) report.partial("too-large");
    tellOfMissingSources(scan.root(), report);
    report.setElapsed(since(start));
    prepare(report);
}

// What becomes of a group whose instances are more than memory holds.
GroupResult outOfMemory() {
    GroupResult result;
    result.state = GroupState::Unread;
    result.reason = "memory";
    return result;
}

// False when nobody can be told of it.
bool workOn(const Group& group, Scan& scan, const Prepare& prepare, int pipe, SharedTexts& texts,
            Clock::time_point deadline) {
    try {
        Report report(group);
        gather(scan, report, prepare, deadline);
        const GroupResult result = render(report, scan.options().pretty);
        const std::optional<std::uint64_t> place = texts.append(result.xml);
        return place && writeAll(pipe, frameOf(result, *place));
    } catch (const std::bad_alloc&) {
        scan.limitTime({});
    }
    return writeAll(pipe, frameOf(outOfMemory(), texts.append({}).value_or(0)));
}

// The length of a text and the text.
bool writeText(int pipe, const std::string& text) {
    const std::uint64_t length = text.size();
    return writeAll(pipe, {reinterpret_cast<const char*>(&length), sizeof length}) && writeAll(pipe, text);
}

// The child's part: enters the sandbox, tells what is missing of it, gathers the groups and writes a frame for each. Its standard streams are shut, for
// whoever waits for the scanner's output to end would wait for a child that cannot be killed as well.
[[noreturn]] void work(Scan& scan, std::span<const Group* const> groups, const Prepare& prepare, int pipe,
                       SharedTexts& texts, pid_t parent, const Deadline& deadline) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != parent) ::_exit(1);
    const int null = ::open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) ::dup2(null, stream);
    const std::string missing = enterSandbox();
    if (!writeText(pipe, missing)) ::_exit(1);
    if (!missing.empty() && !scan.options().sandboxOptional) ::_exit(1);
    for (const Group* const group : groups) {
        if (!workOn(*group, scan, prepare, pipe, texts, deadline())) ::_exit(1);
    }
    ::_exit(0);
}

// A child that gathers groups; killed when its owner is done with it.
class Worker {
  public:
    Worker(Scan& scan, std::span<const Group* const> groups, const Prepare& prepare,
           const Deadline& deadline) {
        std::array<int, 2> ends{};
        if (::pipe2(ends.data(), O_CLOEXEC) != 0) fail("pipe2");
        pipe_ = kest::Descriptor(ends[0]);
        const kest::Descriptor far(ends[1]);
        const pid_t self = ::getpid();
        process_ = ::fork();
        if (process_ < 0) fail("fork");
        if (process_ == 0) {
            pipe_.close();
            work(scan, groups, prepare, far.number(), texts_, self, deadline);
        }
    }
    ~Worker() {
        if (process_ < 0) return;
        // One that hangs in the kernel dies when the kernel lets go of it; nobody waits for that.
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, WNOHANG);
    }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    // What is missing of its sandbox. REQUIRES: called once, before anything else.
    std::string missing() {
        std::uint64_t length = 0;
        while (received_.size() < sizeof length) {
            if (!receive()) return {};  // that it died shows with the first group
        }
        std::memcpy(&length, received_.data(), sizeof length);
        while (received_.size() < sizeof length + length) {
            if (!receive()) return {};
        }
        std::string text = received_.substr(sizeof length, length);
        received_.erase(0, sizeof length + length);
        return text;
    }

    // Waits for a child that has nothing more to do, so that its time counts as this process's.
    void join(Clock::time_point deadline) {
        while (waitForInput(deadline)) {
            if (receive()) continue;
            ::waitpid(process_, nullptr, 0);
            process_ = -1;
            return;
        }
    }

    // Fills in the next group's result. Otherwise why there is none.
    const char* next(Clock::time_point deadline, GroupResult& result) {
        for (;;) {
            const std::size_t length = frameLength(received_);
            if (length > 0 && received_.size() >= length) {
                const bool read = readFrame(std::string_view(received_).substr(0, length), texts_, result);
                received_.erase(0, length);
                return read ? nullptr : "failed";
            }
            if (!waitForInput(deadline)) return "timeout";
            if (!receive()) return "failed";
        }
    }

  private:
    [[noreturn]] static void fail(const char* call) {
        throw std::system_error(errno, std::generic_category(), call);
    }

    bool waitForInput(Clock::time_point deadline) const {
        for (;;) {
            const auto left = std::chrono::ceil<milliseconds>(deadline - Clock::now()).count();
            pollfd input{pipe_.number(), POLLIN, 0};
            const int ready = ::poll(&input, 1, static_cast<int>(std::max<std::int64_t>(left, 0)));
            if (ready > 0) return true;
            if (ready == 0 && left <= 0) return false;
            if (ready < 0 && errno != EINTR) fail("poll");
        }
    }

    // False when the child has ended.
    bool receive() {
        std::array<char, 4096> buffer;
        const ssize_t count = ::read(pipe_.number(), buffer.data(), buffer.size());
        if (count > 0) received_.append(buffer.data(), static_cast<std::size_t>(count));
        return count > 0 || (count < 0 && errno == EINTR);
    }

    pid_t process_ = -1;
    SharedTexts texts_;
    kest::Descriptor pipe_;
    std::string received_;
};

class Run {
  public:
    Run(Scan& scan, const Limits& limits, const Prepare& prepare, const OnResult& onResult)
        : scan_(scan),
          limits_(limits),
          prepare_(prepare),
          onResult_(onResult),
          end_(Clock::now() + limits.run) {}

    void gatherAll(std::span<const Group* const> groups) {
        const bool here = needNoChild(scan_, groups);
        while (!groups.empty() && Clock::now() < end_) {
            groups = groups.subspan(here ? gatherHere(*groups.front()) : gatherSome(groups));
        }
        for (const Group* const group : groups) finish(*group, "timeout", {}, Clock::now());
    }

  private:
    // Gathers this group without a child; one group settled.
    std::size_t gatherHere(const Group& group) {
        const auto report = std::make_shared<Report>(group);
        const Clock::time_point start = Clock::now();
        try {
            gather(scan_, *report, prepare_, std::min(start + limits_.group, end_));
        } catch (const std::bad_alloc&) {
            finish(group, "memory", {}, start);
            return 1;
        }
        GroupResult result = outcomeOf(*report);
        result.report = report;
        onResult_(std::move(result));
        return 1;
    }

    // Gathers with one child until it fails; returns how many groups that has settled.
    std::size_t gatherSome(std::span<const Group* const> groups) {
        Worker worker(scan_, groups, prepare_, [this] { return deadlineOf(limits_, end_); });
        if (const std::string missing = worker.missing(); !missing.empty()) tellOfSandbox(scan_, missing);
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const Clock::time_point start = Clock::now();
            GroupResult result;
            const char* const failure = worker.next(std::min(start + limits_.group, end_), result);
            finish(*groups[i], failure, std::move(result), start);
            if (failure != nullptr) return i + 1;
        }
        worker.join(end_);
        return groups.size();
    }

    void finish(const Group& group, const char* failure, GroupResult&& result, Clock::time_point start) {
        if (failure != nullptr) {
            result = {};
            result.state = GroupState::Unread;
            result.reason = failure;
            result.elapsed = since(start);
        }
        result.group = &group;
        onResult_(std::move(result));
    }

    Scan& scan_;
    Limits limits_;
    const Prepare& prepare_;
    const OnResult& onResult_;
    Clock::time_point end_;
};

}  // namespace

// A tree below a directory was made by others: reading it may end this program, or hang with their disk.
bool needNoChild(const Scan& scan, std::span<const Group* const> groups) {
    return scan.root().live() && std::ranges::all_of(groups, &Group::plainFiles);
}

void tellOfSandbox(Scan& scan, const std::string& missing) {
    if (!scan.options().sandboxOptional) throw Unconfined(missing);
    std::vector<std::string>& warnings = scan.summary.warnings;
    std::string warning = "the sandbox is not whole here: " + missing;
    if (std::ranges::find(warnings, warning) != warnings.end()) return;
    std::fprintf(stderr, "quorvah: %s\n", warning.c_str());
    warnings.push_back(std::move(warning));
}

void gatherGroups(Scan& scan, std::span<const Group* const> groups, const Limits& limits,
                  const Prepare& prepare, const OnResult& onResult) {
    Run(scan, limits, prepare, onResult).gatherAll(groups);
}

}  // namespace toolkit::quorvah
