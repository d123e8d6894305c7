#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <span>
#include <string>

#include "toolkit/machine/sandbox/WorkerProcess.h"
#include "toolkit/quorvah/report/GroupResult.h"
#include "toolkit/quorvah/report/SharedBuffer.h"
#include "toolkit/quorvah/scan/GatherGroup.h"
#include "toolkit/quorvah/scan/GroupQueue.h"

namespace toolkit::quorvah {

// A child process that enters the sandbox and gathers groups until the queue is empty. It is killed when the object is
// destroyed.
class GatheringProcess {
  public:
    using Clock = WorkerProcess::Clock;
    // The deadline of a group that starts now.
    using Deadline = std::function<Clock::time_point()>;
    enum class Event { None, Finished, Ended };

    // The queue has numbers of `groups`. Throws std::system_error if the child cannot be started.
    GatheringProcess(GatheringContext& context, std::span<const Group* const> groups, GroupQueue& queue,
                     const Prepare& prepare, const Deadline& deadline);

    // What the child could not give up; empty if its sandbox is complete. Nothing if the child does not tell before the
    // deadline. REQUIRES: called once, before anything else.
    std::optional<std::string> missingFromSandbox(Clock::time_point deadline);

    // A descriptor that can be read when there is a next event.
    int input() const { return child_.input(); }
    // Does not wait. `Finished` fills `result` and the number of its group. After `Ended` there is no other event: the child
    // has ended or does not keep to the protocol.
    Event next(std::size_t& group, GroupResult& result);

    struct Current {
        std::size_t group;
        Clock::time_point start;
    };
    // The group that the child gathers. Nothing before the first event, and after the last group.
    const std::optional<Current>& current() const { return current_; }
    // Whether the child has ever begun to gather a group.
    bool hasBegun() const { return begun_; }

    // Waits for a child that has gathered all its groups, so that its CPU time is added to that of this process.
    void join(Clock::time_point deadline);

  private:
    Event take(std::string_view frame, std::size_t& group, GroupResult& result);
    bool receive();
    bool receiveAtLeast(std::size_t size, Clock::time_point deadline);

    std::size_t groups_;
    SharedBuffer xml_;
    WorkerProcess child_;
    std::string received_;
    std::optional<Current> current_;
    bool begun_ = false;
};

}  // namespace toolkit::quorvah
