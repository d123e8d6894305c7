// What a CPU calls itself, from the keys that each architecture has for it in /proc/cpuinfo.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/CpuInfo.h"

namespace toolkit::quorvah {

struct CpuNames {
    std::string name;          // "Neoverse-N1"
    std::string manufacturer;  // "ARM"
    std::string family;
    std::string model;
    std::string stepping;
};
CpuNames readCpuNames(const CpuInfo& info, int cpu);

// The revision of the microcode as the kernel writes it, "0xb000040".
std::string microcode(const Root& root, const CpuInfo& info, int cpu);

// MHz.
Count maxClock(const Root& root, const CpuInfo& info, int cpu);
Count currentClock(const Root& root, const CpuInfo& info, int cpu);

}  // namespace toolkit::quorvah
