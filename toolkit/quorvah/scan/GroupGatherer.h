#pragma once

#include <chrono>
#include <functional>
#include <span>
#include <string>

#include "toolkit/quorvah/report/GroupResult.h"
#include "toolkit/quorvah/scan/GatherGroup.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// The time that gathering may take.
struct Limits {
    std::chrono::milliseconds group{10'000};
    std::chrono::milliseconds run{60'000};
};

// Receives the result of each group, in the order of the groups.
using OnResult = std::function<void(GroupResult&& result)>;

// Gathers the groups in a sandboxed child process, so that a group that hangs or crashes affects only itself:
//   - A group that exceeds its time is unread by reason of "timeout", and another child gathers the next groups. Most
//     groups end earlier and keep what they have, because every look at the tree checks the clock.
//   - A group whose code ends the child is unread by reason of "failed".
//   - A group that lacks a permission is partial by reason of "permission", or unread if it has no instances.
// If canGatherInProcess(), no child is started, and a group that exceeds its time keeps what it has.
//
// Throws SandboxIncomplete if the child cannot enter the sandbox completely and the options do not allow that; otherwise
// that is a warning in the summary. Throws std::system_error if no process can be started.
void gatherGroups(GatheringContext& context, std::span<const Group* const> groups, const Limits& limits,
                  const Prepare& prepare, const OnResult& onResult);

// Whether gatherGroups() needs no child for these groups. The caller must then enter the sandbox.
bool canGatherInProcess(const GatheringContext& context, std::span<const Group* const> groups);

// Adds a warning about what is missing from the sandbox. Throws SandboxIncomplete if the options do not allow that.
void reportIncompleteSandbox(GatheringContext& context, const std::string& missing);

}  // namespace toolkit::quorvah
