#pragma once

#include <string>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/CpuTopology.h"

namespace toolkit::quorvah {

// The caches of a CPU whose core is known, from sysfs or else from /proc/cpuinfo.
std::vector<Cache> readCaches(const Root& root, const CpuInfo& info, const LogicalCpu& cpu);

}  // namespace toolkit::quorvah
