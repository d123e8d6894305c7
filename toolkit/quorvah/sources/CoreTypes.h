#pragma once

#include <map>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/quorvah/sources/CpuTopology.h"

namespace toolkit::quorvah {

// The kinds of cores on a machine with fast and with efficient ones: by the performance counters of x86, or else by
// "cpu_capacity", which is greatest for the fastest core. A core is efficient if its capacity is nearer to the least than
// to the greatest one. Capacities that differ by less than a quarter are those of cores of one kind.
class CoreTypes {
  public:
    CoreTypes(const Root& root, const std::vector<LogicalCpu>& cpus);

    // "performance" or "efficiency"; empty on a machine with one kind of cores.
    std::string_view of(int cpu) const;

  private:
    void addAll(const std::vector<int>& cpus, std::string_view type);
    void readCapacities(const Root& root, const std::vector<LogicalCpu>& cpus);

    std::map<int, std::string_view> types_;
};

}  // namespace toolkit::quorvah
