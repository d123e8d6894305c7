// Clock frequencies of a CPU, from cpufreq in sysfs or else from /proc/cpuinfo.
#pragma once

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/CpuInfo.h"

namespace toolkit::quorvah {

// MHz.
Count maxClock(const Root& root, const CpuInfo& info, int cpu);
Count currentClock(const Root& root, const CpuInfo& info, int cpu);

}  // namespace toolkit::quorvah
