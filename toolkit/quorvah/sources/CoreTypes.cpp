#include "toolkit/quorvah/sources/CoreTypes.h"

#include <algorithm>
#include <string>

#include "toolkit/quorvah/sources/CpuList.h"

namespace toolkit::quorvah {

namespace {

constexpr std::string_view kPerformance = "performance";
constexpr std::string_view kEfficiency = "efficiency";

}  // namespace

CoreTypes::CoreTypes(const Root& root, const std::vector<LogicalCpu>& cpus) {
    addAll(readCpuList(root.readLine("/sys/devices/cpu_core/cpus")), kPerformance);
    for (const char* const file : {"/sys/devices/cpu_atom/cpus", "/sys/devices/cpu_lowpower/cpus"})
        addAll(readCpuList(root.readLine(file)), kEfficiency);
    if (types_.empty()) readCapacities(root, cpus);
}

void CoreTypes::addAll(const std::vector<int>& cpus, std::string_view type) {
    for (const int cpu : cpus) types_.emplace(cpu, type);
}

void CoreTypes::readCapacities(const Root& root, const std::vector<LogicalCpu>& cpus) {
    std::map<int, std::uint64_t> capacities;
    for (const LogicalCpu& cpu : cpus) {
        const Count capacity =
            root.readCount("/sys/devices/system/cpu/cpu" + std::to_string(cpu.number) + "/cpu_capacity");
        if (capacity) capacities.emplace(cpu.number, *capacity);
        if (capacities.empty() && cpu.online.value_or(false)) return;  // this kernel has no such files
    }
    if (capacities.empty()) return;
    const auto [least, greatest] =
        std::ranges::minmax_element(capacities, {}, [](const auto& entry) { return entry.second; });
    const std::uint64_t low = least->second;
    const std::uint64_t high = greatest->second;
    if (high - low < high / 4) return;
    for (const auto& [cpu, capacity] : capacities)
        types_.emplace(cpu, capacity - low < high - capacity ? kEfficiency : kPerformance);
}

std::string_view CoreTypes::of(int cpu) const {
    const auto found = types_.find(cpu);
    return found == types_.end() ? std::string_view() : found->second;
}

}  // namespace toolkit::quorvah
