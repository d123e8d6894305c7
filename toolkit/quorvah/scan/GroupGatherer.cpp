#include "toolkit/quorvah/scan/GroupGatherer.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "toolkit/quorvah/scan/GatheringCrew.h"

namespace toolkit::quorvah {

namespace {

using Clock = std::chrono::steady_clock;

void gatherInProcess(GatheringContext& context, const Group& group, Clock::time_point deadline,
                     const Prepare& prepare, const OnResult& onResult) {
    const auto data = std::make_shared<GroupData>(group);
    const Clock::time_point start = Clock::now();
    GroupResult result;
    try {
        gatherGroup(context, *data, prepare, deadline);
        result = resultWithoutXml(*data);
        result.data = data;
    } catch (const std::bad_alloc&) {
        result = unreadResult("memory", Clock::now() - start);
    }
    result.group = &group;
    onResult(std::move(result));
}

void gatherAllInProcess(GatheringContext& context, std::span<const Group* const> groups, const Limits& limits,
                        const Prepare& prepare, const OnResult& onResult) {
    const Clock::time_point end = Clock::now() + limits.run;
    for (const Group* const group : groups) {
        if (Clock::now() < end) {
            gatherInProcess(context, *group, std::min(Clock::now() + limits.group, end), prepare, onResult);
        } else {
            GroupResult result = unreadResult("timeout", {});
            result.group = group;
            onResult(std::move(result));
        }
    }
}

}  // namespace

// A tree below a directory may be hostile: reading it can crash this program or block on the tree's disk.
bool canGatherInProcess(const GatheringContext& context, std::span<const Group* const> groups) {
    return context.root().live() && std::ranges::all_of(groups, &Group::readsPlainFilesOnly);
}

void gatherGroups(GatheringContext& context, std::span<const Group* const> groups, const Limits& limits,
                  const Prepare& prepare, const OnResult& onResult) {
    if (canGatherInProcess(context, groups)) {
        gatherAllInProcess(context, groups, limits, prepare, onResult);
    } else {
        GatheringCrew(context, groups, limits, prepare).gather(onResult);
    }
}

}  // namespace toolkit::quorvah
