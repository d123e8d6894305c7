#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/CpuCaches.h"
#include "toolkit/quorvah/sources/CpuInfo.h"

namespace toolkit::quorvah {

// The place of a logical CPU in the machine. Unknown ids are missing.
struct LogicalCpu {
    int number = 0;
    std::optional<bool> online;
    Count drawer;
    Count book;
    Count package;  // unique in the machine
    Count die;
    Count cluster;
    Count core;            // unique in its die
    std::string siblings;  // the known CPUs of its core, as a CPU list
    std::optional<int> thread;
    std::optional<int> node;
    std::vector<Cache> caches;
};

// The present logical CPUs, including offline ones, sorted: those in the list "present" of sysfs, or else those with a
// directory in sysfs, or else those in other lists of sysfs, or else those in /proc/cpuinfo.
std::vector<LogicalCpu> readCpus(const Root& root, const CpuInfo& info);

// The size of the caches with this level and type in KiB; std::nullopt if there are none. Without a type the sum of all
// types, because some processors have separate caches for data and instructions also on the second level.
Count cacheSize(const LogicalCpu& cpu, int level, std::string_view type = {});

}  // namespace toolkit::quorvah
