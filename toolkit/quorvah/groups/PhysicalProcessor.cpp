#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "schema/groups/PhysicalProcessor.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CpuFrequency.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/CpuModel.h"
#include "toolkit/quorvah/sources/CpuPackages.h"
#include "toolkit/quorvah/sources/CpuTopology.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/SmbiosProcessor.h"

namespace toolkit::quorvah {

namespace {

using Cpus = std::vector<const LogicalCpu*>;

// The size of all caches of a level in KiB. A cache that several CPUs share is counted once. Unknown if the files do not
// tell who shares a cache.
Count totalCache(const Cpus& cpus, int level) {
    std::set<std::pair<std::string_view, std::string_view>> counted;
    Count total;
    for (const LogicalCpu* const cpu : cpus) {
        for (const Cache& cache : cpu->caches) {
            if (cache.level != level) continue;
            if (cache.instance.empty() && cpus.size() > 1) return std::nullopt;
            if (counted.emplace(cache.type, cache.instance).second)
                total = sum(total.value_or(0), cache.size);
        }
    }
    return total;
}

template <typename Id>
std::size_t distinct(const Cpus& cpus, std::optional<Id> LogicalCpu::*id) {
    std::set<Id> ids;
    for (const LogicalCpu* const cpu : cpus) {
        if (cpu->*id) ids.insert(*(cpu->*id));
    }
    return ids.size();
}

// Leaves the field unknown if the count is 0.
void setCount(Instance& instance, const char* field, std::integral auto count) {
    if (count > 0) instance.set(field, count);
}

void setTopology(const CpuPackage& package, Instance& processor) {
    processor.set("NumberOfCores", package.cores);
    processor.set("NumberOfEnabledCores", package.enabledCores);
    processor.set("NumberOfLogicalProcessors", package.processors);
    processor.set("ThreadsPerCore", package.threadsPerCore);
    setCount(processor, "Dies", distinct(package.cpus, &LogicalCpu::die));
    setCount(processor, "NumaNodes", distinct(package.cpus, &LogicalCpu::node));
    processor.set("L2CacheSize", totalCache(package.cpus, 2));
    processor.set("L3CacheSize", totalCache(package.cpus, 3));
    processor.set("L4CacheSize", totalCache(package.cpus, 4));
}

// A package with cores of several kinds has several names. Its clock is that of its fastest core.
void setModels(const Root& root, const CpuInfo& info, const Cpus& cpus, Instance& processor) {
    std::vector<std::string> names;
    Count fastest;
    const auto setFirst = [&processor](const char* field, const std::string& value) {
        if (processor.get(field).empty()) processor.set(field, value);
    };
    for (const LogicalCpu* const cpu : cpus) {
        const Count clock = maxClock(root, info, cpu->number);
        if (clock && clock > fastest) fastest = clock;
        const CpuModel model = readCpuModel(info, cpu->number);
        setFirst("Manufacturer", model.manufacturer);
        setFirst("Family", model.family);
        if (names.empty()) setFirst("Microcode", microcode(root, info, cpu->number));
        if (!model.name.empty() && std::ranges::find(names, model.name) == names.end())
            names.push_back(model.name);
    }
    processor.set("MaxClockSpeed", fastest);
    processor.set("Name", names);
}

void setSmbios(const GatheringContext& context, const SmbiosProcessor& socket, Instance& processor) {
    processor.set("SocketDesignation", context.firmwareText(socket.designation));
    processor.set("Upgrade", socket.upgrade);
    const std::pair<const char*, unsigned> told[] = {{"NumberOfCores", socket.cores},
                                                     {"NumberOfEnabledCores", socket.enabledCores},
                                                     {"NumberOfLogicalProcessors", socket.threads},
                                                     {"MaxClockSpeed", socket.maxSpeed}};
    for (const auto& [field, number] : told) {
        if (processor.get(field).empty()) setCount(processor, field, number);
    }
    setCount(processor, "ExternalClock", socket.externalClock);
    setCount(processor, "Voltage", socket.voltage);
    processor.set("ProcessorID", socket.id);
    processor.set("SerialNumber", context.firmwareText(socket.serialNumber));
    processor.set("AssetTag", context.firmwareText(socket.assetTag));
    processor.set("PartNumber", context.firmwareText(socket.partNumber));
}

// Adds a package whose CPUs are all offline. Only the firmware tells of it.
void addOffline(const GatheringContext& context, const SmbiosProcessor& socket, std::uint64_t id,
                GroupData& data) {
    Instance& processor = data.add("package" + std::to_string(id));
    processor.set("Name", context.firmwareText(socket.version));
    processor.set("NumberOfEnabledCores", 0);
    setSmbios(context, socket, processor);
}

// The number of CPUs in no package.
std::size_t countUnplaced(const std::vector<LogicalCpu>& cpus, const std::vector<CpuPackage>& packages) {
    std::uint64_t placed = 0;
    for (const CpuPackage& package : packages) placed += package.processors.value_or(package.cpus.size());
    return placed < cpus.size() ? cpus.size() - placed : 0;
}

// Sockets and packages can be matched by their order only, or by the numbers of the packages if a socket has no CPU that
// is online.
void addSmbios(const GatheringContext& context, const std::vector<SmbiosProcessor>& sockets,
               const std::vector<CpuPackage>& packages, std::size_t unplaced, GroupData& data) {
    if (sockets.size() == packages.size()) {
        for (std::size_t i = 0; i < sockets.size(); ++i) setSmbios(context, sockets[i], data.instances()[i]);
        return;
    }
    const bool numbered = !packages.empty() && packages.back().id < sockets.size();
    if (!numbered || unplaced == 0) return;
    std::size_t next = 0;
    for (std::uint64_t id = 0; id < sockets.size(); ++id) {
        if (next < packages.size() && packages[next].id == id) {
            setSmbios(context, sockets[id], data.instances()[next++]);
        } else {
            addOffline(context, sockets[id], id, data);
        }
    }
}

constexpr const char* kSources[] = {"/proc/cpuinfo", "/sys/devices/system/cpu"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const CpuInfo info(root.read("/proc/cpuinfo").value_or(""));
    const std::vector<LogicalCpu> cpus = readCpus(root, info);
    const std::vector<SmbiosProcessor> sockets = readSmbiosProcessors(Smbios(root));
    const std::vector<CpuPackage> packages = packagesOf(root, cpus, sockets.size());
    for (const CpuPackage& package : packages) {
        Instance& processor = data.add("package" + std::to_string(package.id));
        setModels(root, info, package.cpus, processor);
        setTopology(package, processor);
    }
    addSmbios(context, sockets, packages, countUnplaced(cpus, packages), data);
}

}  // namespace

constexpr Group kPhysicalProcessor{.displayName = "PhysicalProcessor",
                                   .xmlName = "PhysicalProcessor",
                                   .fields = schema::kPhysicalProcessor.fields,
                                   .gather = gather,
                                   .sources = kSources};

}  // namespace toolkit::quorvah
