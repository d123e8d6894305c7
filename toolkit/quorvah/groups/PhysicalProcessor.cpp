#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CpuFrequency.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/CpuModel.h"
#include "toolkit/quorvah/sources/CpuTopology.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/SmbiosProcessor.h"

namespace toolkit::quorvah {

namespace {

constexpr FieldDef kFields[] = {
    {"DeviceID"},
    {"Name"},
    {"Manufacturer"},
    {"Family"},
    {"SocketDesignation"},
    {"Upgrade"},
    {"NumberOfCores", FieldDef::kCount},
    {"NumberOfEnabledCores", FieldDef::kCount},
    {"NumberOfLogicalProcessors", FieldDef::kCount},
    {"MaxClockSpeed", FieldDef::kCount},
    {"ExternalClock", FieldDef::kCount},
    {"Voltage", FieldDef::kCount},
    {"ProcessorID"},
    {"SerialNumber", FieldDef::kPrivate},
    {"AssetTag", FieldDef::kPrivate},
    {"PartNumber"},
    {"ThreadsPerCore", FieldDef::kCount},
    {"Dies", FieldDef::kCount},
    {"NumaNodes", FieldDef::kCount},
    {"L2CacheSize", FieldDef::kCount},
    {"L3CacheSize", FieldDef::kCount},
    {"Microcode"},
};

using Package = std::vector<const LogicalCpu*>;

// The CPUs of each package. If no CPU states its package, as on some virtual machines, there is a single package. An
// offline CPU never states its package and is counted only if there is a single one.
std::map<std::uint64_t, Package> packagesOf(const std::vector<LogicalCpu>& cpus) {
    std::map<std::uint64_t, Package> packages;
    for (const LogicalCpu& cpu : cpus) {
        if (cpu.package) packages[*cpu.package].push_back(&cpu);
    }
    if (packages.empty() && !cpus.empty()) packages[0];
    if (packages.size() != 1) return packages;
    for (const LogicalCpu& cpu : cpus) {
        if (!cpu.package) packages.begin()->second.push_back(&cpu);
    }
    return packages;
}

// The number of threads of each core. A core is identified by its CPUs, because core ids repeat across dies.
std::map<std::string, int> threadsOfCores(const Package& package) {
    std::map<std::string, int> cores;
    for (const LogicalCpu* const cpu : package) {
        if (!cpu->siblings.empty()) ++cores[cpu->siblings];
    }
    return cores;
}

// The size of all caches of a level in KiB. A cache that several CPUs share is counted once.
Count totalCache(const Package& package, int level) {
    std::set<std::pair<std::string, std::string>> counted;
    Count total = 0;
    for (const LogicalCpu* const cpu : package) {
        for (const Cache& cache : cpu->caches) {
            if (cache.level != level) continue;
            if (cache.sharedCpus.empty() || counted.emplace(cache.type, cache.sharedCpus).second) {
                total = sum(total, cache.size);
            }
        }
    }
    return total;
}

template <typename Id>
std::size_t distinct(const Package& package, std::optional<Id> LogicalCpu::*id) {
    std::set<Id> ids;
    for (const LogicalCpu* const cpu : package) {
        if (cpu->*id) ids.insert(*(cpu->*id));
    }
    return ids.size();
}

// Leaves the field unknown if the count is 0.
void setCount(Instance& instance, const char* field, std::integral auto count) {
    if (count > 0) instance.set(field, count);
}

void setTopology(const Package& package, Instance& processor) {
    const std::map<std::string, int> cores = threadsOfCores(package);
    int threads = 0;
    for (const auto& [siblings, count] : cores) threads = std::max(threads, count);
    setCount(processor, "NumberOfCores", cores.size());
    setCount(processor, "NumberOfEnabledCores", cores.size());
    setCount(processor, "NumberOfLogicalProcessors", package.size());
    setCount(processor, "ThreadsPerCore", threads);
    setCount(processor, "Dies", distinct(package, &LogicalCpu::die));
    setCount(processor, "NumaNodes", distinct(package, &LogicalCpu::node));
    setCount(processor, "L2CacheSize", totalCache(package, 2).value_or(0));
    setCount(processor, "L3CacheSize", totalCache(package, 3).value_or(0));
}

// A package with cores of several kinds has several names.
void setNames(const Root& root, const CpuInfo& info, const Package& package, Instance& processor) {
    std::vector<std::string> kinds;
    for (const LogicalCpu* const cpu : package) {
        if (!info.lists(cpu->number)) continue;
        const CpuModel model = readCpuModel(info, cpu->number);
        if (std::ranges::find(kinds, model.name) != kinds.end()) continue;
        kinds.push_back(model.name);
        if (kinds.size() > 1) continue;
        processor.set("Manufacturer", model.manufacturer);
        processor.set("Family", model.family);
        processor.set("MaxClockSpeed", maxClock(root, info, cpu->number));
        processor.set("Microcode", microcode(root, info, cpu->number));
    }
    processor.set("Name", kinds);
}

void setSmbios(const GatheringContext& context, const SmbiosProcessor& socket, Instance& processor) {
    processor.set("SocketDesignation", context.firmwareText(socket.designation));
    processor.set("Upgrade", socket.upgrade);
    setCount(processor, "NumberOfCores", socket.cores);
    if (processor.get("NumberOfEnabledCores").empty()) {
        setCount(processor, "NumberOfEnabledCores", socket.enabledCores);
    }
    if (processor.get("MaxClockSpeed").empty()) setCount(processor, "MaxClockSpeed", socket.maxSpeed);
    setCount(processor, "ExternalClock", socket.externalClock);
    setCount(processor, "Voltage", socket.voltage);
    processor.set("ProcessorID", socket.id);
    processor.set("SerialNumber", context.firmwareText(socket.serialNumber));
    processor.set("AssetTag", context.firmwareText(socket.assetTag));
    processor.set("PartNumber", context.firmwareText(socket.partNumber));
}

constexpr const char* kSources[] = {"/proc/cpuinfo", "/sys/devices/system/cpu"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const CpuInfo info(root.read("/proc/cpuinfo").value_or(""));
    const std::vector<LogicalCpu> cpus = readCpus(root, info);
    const std::map<std::uint64_t, Package> packages = packagesOf(cpus);
    const std::vector<SmbiosProcessor> sockets = readSmbiosProcessors(Smbios(root));
    std::size_t socket = 0;
    for (const auto& [id, package] : packages) {
        Instance& processor = data.add("package" + std::to_string(id));
        setNames(root, info, package, processor);
        setTopology(package, processor);
        // Sockets and packages can be matched by their order only.
        if (sockets.size() == packages.size()) setSmbios(context, sockets[socket++], processor);
    }
}

}  // namespace

constexpr Group kPhysicalProcessor{.displayName = "PhysicalProcessor",
                                   .xmlName = "PhysicalProcessor",
                                   .fields = kFields,
                                   .gather = gather,
                                   .sources = kSources};

}  // namespace toolkit::quorvah
