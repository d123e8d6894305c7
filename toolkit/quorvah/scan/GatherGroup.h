#pragma once

#include <chrono>
#include <functional>

#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

// Prepares gathered data for the output file. It is called in the process that gathered the data.
using Prepare = std::function<void(GroupData& data)>;

// Gathers the group of `data`, in this process, and prepares the data. After the deadline every look at the tree ends
// the group, which is then partial by reason of "timeout". Throws std::bad_alloc only if the data cannot be prepared.
void gatherGroup(GatheringContext& context, GroupData& data, const Prepare& prepare,
                 std::chrono::steady_clock::time_point deadline);

}  // namespace toolkit::quorvah
