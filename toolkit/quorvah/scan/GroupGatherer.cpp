#include "toolkit/quorvah/scan/GroupGatherer.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <new>
#include <utility>

#include "toolkit/quorvah/scan/GatheringProcess.h"
#include "toolkit/quorvah/scan/GatheringSandbox.h"

namespace toolkit::quorvah {

namespace {

using Clock = std::chrono::steady_clock;

// Earlier than the time at which the child is killed: the last fifth of a group's time is for preparing what it has.
Clock::time_point deadlineInChild(const Limits& limits, Clock::time_point end) {
    const Clock::time_point now = Clock::now();
    return now + std::min<Clock::duration>(limits.group, end - now) * 4 / 5;
}

class GroupGatherer {
  public:
    GroupGatherer(GatheringContext& context, const Limits& limits, const Prepare& prepare,
                  const OnResult& onResult)
        : context_(context),
          limits_(limits),
          prepare_(prepare),
          onResult_(onResult),
          end_(Clock::now() + limits.run) {}

    void gatherAll(std::span<const Group* const> groups) {
        const bool inProcess = canGatherInProcess(context_, groups);
        while (!groups.empty() && Clock::now() < end_) {
            if (inProcess) {
                gatherInProcess(*groups.front());
                groups = groups.subspan(1);
            } else {
                groups = groups.subspan(gatherInChild(groups));
            }
        }
        for (const Group* const group : groups) finish(*group, "timeout", {}, Clock::now());
    }

  private:
    void gatherInProcess(const Group& group) {
        const auto data = std::make_shared<GroupData>(group);
        const Clock::time_point start = Clock::now();
        try {
            gatherGroup(context_, *data, prepare_, std::min(start + limits_.group, end_));
        } catch (const std::bad_alloc&) {
            finish(group, "memory", {}, start);
            return;
        }
        GroupResult result = resultWithoutXml(*data);
        result.data = data;
        onResult_(std::move(result));
    }

    // Gathers with one child until a group fails. Returns the number of groups that are finished.
    std::size_t gatherInChild(std::span<const Group* const> groups) {
        GatheringProcess child(context_, groups, prepare_, [this] { return deadlineInChild(limits_, end_); });
        const std::string missing = child.missingFromSandbox(std::min(Clock::now() + limits_.group, end_));
        if (!missing.empty()) reportIncompleteSandbox(context_, missing);
        for (std::size_t i = 0; i < groups.size(); ++i) {
            const Clock::time_point start = Clock::now();
            GroupResult result;
            const char* const failure = child.next(std::min(start + limits_.group, end_), result);
            finish(*groups[i], failure, std::move(result), start);
            if (failure != nullptr) return i + 1;
        }
        child.join(end_);
        return groups.size();
    }

    void finish(const Group& group, const char* failure, GroupResult&& result, Clock::time_point start) {
        if (failure != nullptr) {
            result = {};
            result.state = GroupState::Unread;
            result.reason = failure;
            result.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
        }
        result.group = &group;
        onResult_(std::move(result));
    }

    GatheringContext& context_;
    Limits limits_;
    const Prepare& prepare_;
    const OnResult& onResult_;
    Clock::time_point end_;
};

}  // namespace

// A tree below a directory may be hostile: reading it can crash this program or block on the tree's disk.
bool canGatherInProcess(const GatheringContext& context, std::span<const Group* const> groups) {
    return context.root().live() && std::ranges::all_of(groups, &Group::readsPlainFilesOnly);
}

void reportIncompleteSandbox(GatheringContext& context, const std::string& missing) {
    if (!context.options().sandboxOptional) throw SandboxIncomplete(missing);
    std::vector<std::string>& warnings = context.summary.warnings;
    std::string warning = "the sandbox is incomplete: " + missing;
    if (std::ranges::find(warnings, warning) != warnings.end()) return;
    std::fprintf(stderr, "quorvah: %s\n", warning.c_str());
    warnings.push_back(std::move(warning));
}

void gatherGroups(GatheringContext& context, std::span<const Group* const> groups, const Limits& limits,
                  const Prepare& prepare, const OnResult& onResult) {
    GroupGatherer(context, limits, prepare, onResult).gatherAll(groups);
}

}  // namespace toolkit::quorvah
