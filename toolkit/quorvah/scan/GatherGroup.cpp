#include "toolkit/quorvah/scan/GatherGroup.h"

#include <algorithm>
#include <exception>
#include <new>
#include <span>
#include <string>

namespace toolkit::quorvah {

namespace {

using Clock = std::chrono::steady_clock;

void setNotGathered(GroupData& data) {
    const char* const otherPlatform = data.group().otherPlatform;
    if (otherPlatform != nullptr) {
        data.notApplicable(otherPlatform);
    } else {
        data.unsupported();
    }
}

// Without any of its sources, an empty group does not mean that the machine has no instances.
void checkSources(const Root& root, GroupData& data) {
    const std::span<const char* const> sources = data.group().sources;
    if (!data.instances().empty() || sources.empty()) return;
    if (std::ranges::any_of(sources, [&root](const char* path) { return root.exists(path); })) return;
    if (root.live()) {
        data.unread("no-source");
    } else {
        data.notApplicable("not-in-tree");
    }
}

}  // namespace

void gatherGroup(GatheringContext& context, GroupData& data, const Prepare& prepare,
                 Clock::time_point deadline) {
    if (data.group().gather == nullptr) {
        setNotGathered(data);
        return;
    }
    const Clock::time_point start = Clock::now();
    const int denials = context.root().denials();
    const int excesses = context.root().excesses();
    const int avoidances = context.root().avoidances();
    context.limitTime(deadline);
    try {
        data.group().gather(context, data);
    } catch (const OutOfTime&) {
        data.partial("timeout");
    } catch (const std::bad_alloc&) {
        data.partial("memory");
    } catch (const TooMuch&) {
        data.partial("too-large");
    } catch (const std::exception& failure) {
        data.partial("failed");
        data.warn(std::string(data.group().xmlName) + ": " + failure.what());
    }
    context.limitTime({});
    if (context.root().denials() > denials) data.partial("permission");
    if (data.trim() || context.root().excesses() > excesses) data.partial("too-large");
    data.dropMalformed();
    if (context.root().avoidances() > avoidances) {
        data.partialBecause("not-local");
    } else {
        checkSources(context.root(), data);
    }
    data.setElapsed(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start));
    prepare(data);
}

}  // namespace toolkit::quorvah
