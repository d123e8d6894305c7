#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/CpuInfo.h"

namespace toolkit::quorvah {

struct Cache {
    int level = 0;
    std::string type;        // "Data", "Instruction", "Unified"
    std::uint64_t size = 0;  // KiB
    std::string sharedCpus;  // the CPUs that share it, as a CPU list
};

// The place of a logical CPU in the machine. Unknown ids are missing.
struct LogicalCpu {
    int number = 0;
    std::optional<bool> online;
    Count package;
    Count die;
    Count cluster;
    Count core;
    std::string siblings;  // the CPUs of its core, as a CPU list
    std::optional<int> thread;
    std::optional<int> node;
    std::vector<Cache> caches;
};

// The present logical CPUs, including offline ones, sorted: those in the CPU lists of sysfs, or else those with a
// directory in sysfs, or else those in /proc/cpuinfo.
std::vector<LogicalCpu> readCpus(const Root& root, const CpuInfo& info);

// The size of the cache with this level and type in KiB; std::nullopt if there is none.
Count cacheSize(const LogicalCpu& cpu, int level, std::string_view type = {});

}  // namespace toolkit::quorvah
