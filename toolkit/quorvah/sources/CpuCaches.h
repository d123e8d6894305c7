#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/CpuInfo.h"

namespace toolkit::quorvah {

struct Cache {
    int level = 0;
    std::string type;        // "Data", "Instruction", "Unified"
    std::uint64_t size = 0;  // KiB
    // Tells the caches of the same level and type apart: the CPUs that share it, or its number. Empty if it is unknown
    // who shares it.
    std::string instance;
};

// The caches of every CPU in the device tree, for kernels that do not describe those of each CPU. None if the CPUs differ.
// Who shares a cache of the second or third level is unknown.
std::vector<Cache> deviceTreeCaches(const Root& root);

// The caches of a CPU, from sysfs or else from /proc/cpuinfo, which describes those of CPUs that are online. `siblings` are
// the CPUs of its core as a list; empty if unknown.
std::vector<Cache> readCaches(const Root& root, const CpuInfo& info, int cpu, const std::string& siblings,
                              bool online);

}  // namespace toolkit::quorvah
