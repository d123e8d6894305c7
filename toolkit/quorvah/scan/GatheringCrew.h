#pragma once

#include <cstddef>
#include <list>
#include <optional>
#include <span>
#include <vector>

#include "toolkit/quorvah/scan/GatheringProcess.h"
#include "toolkit/quorvah/scan/Limits.h"

namespace toolkit::quorvah {

// Several child processes that gather groups at the same time. Each takes the next group that waits.
class GatheringCrew {
  public:
    GatheringCrew(GatheringContext& context, std::span<const Group* const> groups, const Limits& limits,
                  const Prepare& prepare);

    // Gathers the groups and hands over their results in order. Throws as gatherGroups() does.
    void gather(const OnResult& onResult);

  private:
    using Clock = GatheringProcess::Clock;
    using Processes = std::list<GatheringProcess>;

    void start(std::size_t count);
    bool canUseAnother() const;
    Clock::time_point allSlowAt() const;
    Clock::time_point nextDeadline() const;
    void wait() const;
    void receiveResults();
    bool receiveFrom(GatheringProcess& process);
    void settle(std::size_t group, GroupResult&& result);
    void settleAll(const char* failure);
    void handOver(const OnResult& onResult);

    GatheringContext& context_;
    std::span<const Group* const> groups_;
    Limits limits_;
    const Prepare& prepare_;
    Clock::time_point end_;
    GroupQueue queue_;
    Processes processes_;
    std::size_t unsettled_;  // the number of groups without a result
    std::vector<std::optional<GroupResult>> results_;
    std::size_t handedOver_ = 0;
    bool inVain_ = false;  // whether it makes no sense to start another process
};

}  // namespace toolkit::quorvah
