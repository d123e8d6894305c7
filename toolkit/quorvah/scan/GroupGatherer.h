#pragma once

#include <span>

#include "toolkit/quorvah/scan/GatherGroup.h"
#include "toolkit/quorvah/scan/Limits.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// Gathers the groups in sandboxed child processes, so that a group that hangs or crashes affects only itself:
//   - Two children gather at the same time, as far as there are CPUs. When all are busy with one group for long, another
//     one goes on with the next groups.
//   - A group that exceeds its time is unread by reason of "timeout". Most groups end earlier and keep what they have,
//     because every look at the tree checks the clock.
//   - A group whose code ends the child is unread by reason of "failed".
//   - A group that lacks a permission is partial by reason of "permission", or unread if it has no instances. So is one
//     that would need files of another machine, by reason of "not-local".
// If canGatherInProcess(), no child is started, and a group that exceeds its time keeps what it has.
//
// Throws SandboxIncomplete if the child cannot enter the sandbox completely and the options do not allow that; otherwise
// that is a warning in the summary. Throws std::system_error if no process can be started.
void gatherGroups(GatheringContext& context, std::span<const Group* const> groups, const Limits& limits,
                  const Prepare& prepare, const OnResult& onResult);

// Whether gatherGroups() needs no child for these groups. The caller must then enter the sandbox.
bool canGatherInProcess(const GatheringContext& context, std::span<const Group* const> groups);

}  // namespace toolkit::quorvah
