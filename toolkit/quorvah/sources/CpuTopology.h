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
    std::string sharedCpus;  // the list of the CPUs that share it
};

// Where a logical CPU stands. What the tree does not tell is missing.
struct LogicalCpu {
    int number = 0;
    std::optional<bool> online;
    Count package;
    Count die;
    Count cluster;
    Count core;
    std::string siblings;  // the list of the CPUs of the same core
    std::optional<int> thread;
    std::optional<int> node;
    std::vector<Cache> caches;
};

// The logical CPUs that are present, offline ones too, in ascending order: those that sysfs lists, else those
// that have a directory there, else those of /proc/cpuinfo.
std::vector<LogicalCpu> readCpus(const Root& root, const CpuInfo& info);

// Of a CPU's own caches with this level and type; none when it has none.
Count cacheSize(const LogicalCpu& cpu, int level, std::string_view type = {});

}  // namespace toolkit::quorvah
