#include "toolkit/quorvah/scan/GatheringCrew.h"

#include <poll.h>
#include <sched.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <iterator>
#include <system_error>
#include <utility>

#include "toolkit/quorvah/scan/GatheringSandbox.h"

namespace toolkit::quorvah {

namespace {

using std::chrono::milliseconds;
using Clock = GatheringProcess::Clock;

// More do not gather faster: the groups wait for few things but the processor.
constexpr std::size_t kUsualProcesses = 2;
constexpr std::size_t kMaxProcesses = 8;
// When all processes have been busy with one group for so long, another one goes on with the groups that wait.
constexpr milliseconds kPatience{250};

// The number of CPUs that this process may use.
std::size_t usableCpus() {
    cpu_set_t cpus;
    CPU_ZERO(&cpus);
    // It fails if there are more than the set can hold.
    if (::sched_getaffinity(0, sizeof cpus, &cpus) != 0) return kUsualProcesses;
    return static_cast<std::size_t>(CPU_COUNT(&cpus));
}

// The last fifth of a group's time is for preparing what it has.
Clock::time_point deadlineOfGroup(milliseconds limit, Clock::time_point end) {
    const Clock::time_point now = Clock::now();
    return now + std::min<Clock::duration>(limit, end - now) * 4 / 5;
}

}  // namespace

GatheringCrew::GatheringCrew(GatheringContext& context, std::span<const Group* const> groups,
                             const Limits& limits, const Prepare& prepare)
    : context_(context),
      groups_(groups),
      limits_(limits),
      prepare_(prepare),
      end_(Clock::now() + limits.run),
      queue_(groups.size()),
      unsettled_(groups.size()),
      results_(groups.size()) {}

void GatheringCrew::gather(const OnResult& onResult) {
    start(std::min({kUsualProcesses, usableCpus(), groups_.size()}));
    while (unsettled_ > 0 && Clock::now() < end_) {
        if (canUseAnother() && allSlowAt() <= Clock::now()) start(1);
        // Even one that was just started may have ended with its first group.
        if (!processes_.empty()) {
            wait();
            receiveResults();
        } else if (inVain_) {
            break;
        }
        handOver(onResult);
    }
    settleAll(Clock::now() < end_ ? "failed" : "timeout");
    handOver(onResult);
    for (GatheringProcess& process : processes_) {
        if (!process.current()) process.join(std::min(end_, Clock::now() + kPatience));
    }
}

void GatheringCrew::start(std::size_t count) {
    const auto deadline = [this] { return deadlineOfGroup(limits_.group, end_); };
    const std::size_t before = processes_.size();
    try {
        for (std::size_t i = 0; i < count; ++i)
            processes_.emplace_back(context_, groups_, queue_, prepare_, deadline);
    } catch (const std::system_error&) {
        if (processes_.empty()) throw;
        inVain_ = true;
    }
    auto process = std::next(processes_.begin(), static_cast<std::ptrdiff_t>(before));
    while (process != processes_.end()) {
        const auto missing = process->missingFromSandbox(std::min(Clock::now() + limits_.group, end_));
        if (missing && !missing->empty()) reportIncompleteSandbox(context_, *missing);
        inVain_ = inVain_ || !missing;
        process = missing ? std::next(process) : processes_.erase(process);
    }
    receiveResults();  // what came with the message about the sandbox is no longer in the pipes
}

// Whether groups wait for which another process may be started.
bool GatheringCrew::canUseAnother() const {
    const auto busy = std::ranges::count_if(
        processes_, [](const GatheringProcess& process) { return process.current().has_value(); });
    return !inVain_ && processes_.size() < kMaxProcesses && unsettled_ > static_cast<std::size_t>(busy);
}

// When all processes will have been busy with one group for too long. Never if one of them is about to take a group.
GatheringCrew::Clock::time_point GatheringCrew::allSlowAt() const {
    Clock::time_point at = Clock::time_point::min();
    for (const GatheringProcess& process : processes_)
        at =
            std::max(at, process.current() ? process.current()->start + kPatience : Clock::time_point::max());
    return at;
}

GatheringCrew::Clock::time_point GatheringCrew::nextDeadline() const {
    Clock::time_point next = end_;
    for (const GatheringProcess& process : processes_) {
        if (process.current()) next = std::min(next, process.current()->start + limits_.group);
    }
    return canUseAnother() ? std::min(next, allSlowAt()) : next;
}

// Waits for the next event or deadline.
void GatheringCrew::wait() const {
    std::vector<pollfd> inputs;
    for (const GatheringProcess& process : processes_) inputs.push_back({process.input(), POLLIN, 0});
    const auto left = std::chrono::ceil<milliseconds>(nextDeadline() - Clock::now()).count();
    const auto timeout = static_cast<int>(std::clamp<std::int64_t>(left, 0, limits_.run.count()));
    if (::poll(inputs.data(), inputs.size(), timeout) < 0 && errno != EINTR)
        throw std::system_error(errno, std::generic_category(), "poll");
}

void GatheringCrew::receiveResults() {
    for (auto process = processes_.begin(); process != processes_.end();)
        process = receiveFrom(*process) ? std::next(process) : processes_.erase(process);
}

// Returns whether the process goes on.
bool GatheringCrew::receiveFrom(GatheringProcess& process) {
    for (;;) {
        std::size_t group = 0;
        GroupResult result;
        const GatheringProcess::Event event = process.next(group, result);
        if (event == GatheringProcess::Event::Finished) {
            settle(group, std::move(result));
            continue;
        }
        const auto& current = process.current();
        const bool ended = event == GatheringProcess::Event::Ended;
        const Clock::duration elapsed = current ? Clock::now() - current->start : Clock::duration();
        if (!ended && elapsed < limits_.group) return true;
        if (current) settle(current->group, unreadResult(ended ? "failed" : "timeout", elapsed));
        if (!process.hasBegun()) inVain_ = true;
        if (ended) process.join(Clock::now() + kPatience);
        return false;
    }
}

void GatheringCrew::settle(std::size_t group, GroupResult&& result) {
    if (results_[group]) return;
    result.group = groups_[group];
    results_[group] = std::move(result);
    --unsettled_;
}

void GatheringCrew::settleAll(const char* failure) {
    for (std::size_t group = 0; group < groups_.size(); ++group) settle(group, unreadResult(failure, {}));
}

// Hands over the results that all earlier groups have, too.
void GatheringCrew::handOver(const OnResult& onResult) {
    for (; handedOver_ < results_.size() && results_[handedOver_]; ++handedOver_)
        onResult(std::move(*results_[handedOver_]));
}

}  // namespace toolkit::quorvah
