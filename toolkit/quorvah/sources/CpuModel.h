// The identity of a CPU. Each architecture has its own keys for it in /proc/cpuinfo.
#pragma once

#include <string>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/CpuInfo.h"

namespace toolkit::quorvah {

struct CpuModel {
    std::string name;          // "Neoverse-N1"
    std::string manufacturer;  // "ARM"
    std::string family;
    std::string model;
    std::string stepping;
};
CpuModel readCpuModel(const CpuInfo& info, int cpu);

// The revision of the microcode as the kernel writes it, "0xb000040".
std::string microcode(const Root& root, const CpuInfo& info, int cpu);

}  // namespace toolkit::quorvah
