#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/text/Checked.h"

namespace toolkit::quorvah {

// What a CPU has spent its time with since the system started, in milliseconds. Old kernels know fewer kinds.
struct CpuTimes {
    std::string name;  // "cpu0"; "cpu" for all of them together
    Count user;        // includes guests
    Count nice;
    Count system;
    Count idle;
    Count ioWait;
    Count irq;
    Count softIrq;
    Count steal;
    Count guest;
};

struct CpuStatistics {
    std::vector<CpuTimes> cpus;  // "cpu" first
    Count running;               // processes that run or wait for a CPU
};

// Parses /proc/stat.
CpuStatistics readCpuStatistics(std::string_view stat, std::uint64_t ticksPerSecond);

// The percentage of the time between two readings in which the CPUs were not idle. Nothing if no time has passed.
Count loadBetween(const CpuTimes& before, const CpuTimes& after);

}  // namespace toolkit::quorvah
