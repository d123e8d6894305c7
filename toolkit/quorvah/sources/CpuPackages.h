#pragma once

#include <cstdint>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/CpuTopology.h"

namespace toolkit::quorvah {

// A processor package. Counts that the files do not prove are missing.
struct CpuPackage {
    std::uint64_t id = 0;
    std::vector<const LogicalCpu*> cpus;  // those that are known to belong to it
    Count processors;                     // logical processors that are present
    Count cores;                          // cores that are present
    Count enabledCores;                   // cores with a logical processor that is online
    Count threadsPerCore;
};

// The packages of the CPUs, ascending. If no CPU states its package, as on some virtual machines, there is a single one.
//
// Most kernels do not tell the package of a CPU that is offline. It belongs to a package if
//   - all CPUs of its NUMA node that state their package are in that one, and there are other nodes, or
//   - multithreading is switched off, which takes the other threads of every core offline, or
//   - no package can be wholly offline: the firmware has as many (`sockets`; 0 if unknown), or fewer CPUs are offline
//     than are online in the smallest package. Packages are of equal size then.
// Otherwise the counts of present processors and cores are missing.
std::vector<CpuPackage> packagesOf(const Root& root, const std::vector<LogicalCpu>& cpus,
                                   std::size_t sockets);

}  // namespace toolkit::quorvah
