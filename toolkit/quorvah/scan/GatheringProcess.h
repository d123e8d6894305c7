#pragma once

#include <functional>
#include <span>
#include <string>

#include "toolkit/machine/sandbox/WorkerProcess.h"
#include "toolkit/quorvah/report/GroupResult.h"
#include "toolkit/quorvah/report/SharedBuffer.h"
#include "toolkit/quorvah/scan/GatherGroup.h"

namespace toolkit::quorvah {

// A child process that enters the sandbox and gathers groups one after the other. It is killed when the object is
// destroyed.
class GatheringProcess {
  public:
    using Clock = WorkerProcess::Clock;
    // The deadline of a group that starts now.
    using Deadline = std::function<Clock::time_point()>;

    // Starts the child. Throws std::system_error if it cannot be started.
    GatheringProcess(GatheringContext& context, std::span<const Group* const> groups, const Prepare& prepare,
                     const Deadline& deadline);

    // What the child could not give up; empty if its sandbox is complete. Kills a child that does not tell before the
    // deadline. REQUIRES: called once, before anything else.
    std::string missingFromSandbox(Clock::time_point deadline);

    // Waits until the deadline for the result of the next group. Returns null, or the reason why there is no result.
    const char* next(Clock::time_point deadline, GroupResult& result);

    // Waits for a child that has gathered all its groups, so that its CPU time is added to that of this process.
    void join(Clock::time_point deadline);

  private:
    bool receive();
    bool receiveAtLeast(std::size_t size, Clock::time_point deadline);

    SharedBuffer xml_;
    WorkerProcess child_;
    std::string received_;
};

}  // namespace toolkit::quorvah
