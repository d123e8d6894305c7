#include <string>

#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CpuList.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KeyValueText.h"
#include "toolkit/quorvah/sources/SmbiosMemory.h"

namespace toolkit::quorvah {

namespace {

constexpr FieldDef kFields[] = {
    {"DeviceID"},
    {"TotalVisibleMemorySize", FieldDef::kCount},
    {"FreePhysicalMemory", FieldDef::kCount | FieldDef::kVolatile},
    {"TotalVirtualMemorySize", FieldDef::kCount},
    {"FreeVirtualMemory", FieldDef::kCount | FieldDef::kVolatile},
    {"TotalSwapSpaceSize", FieldDef::kCount},
    {"MaximumCapacity", FieldDef::kCount},
    {"NumberOfMemoryDevices", FieldDef::kCount},
    {"InstalledMemory", FieldDef::kCount},
    {"MemAvailable", FieldDef::kCount | FieldDef::kVolatile},
    {"NumaNodes", FieldDef::kCount},
    {"HugePageSize", FieldDef::kCount},
    {"HugePagesTotal", FieldDef::kCount},
    {"ErrorCorrection"},
};

void setMeminfo(const Root& root, Instance& memory) {
    const std::string meminfo = root.read("/proc/meminfo").value_or("");
    const auto line = [&meminfo](const char* key) { return readLeadingCount(valueForKey(meminfo, key)); };
    memory.set("TotalVisibleMemorySize", line("MemTotal"));
    memory.set("FreePhysicalMemory", line("MemFree"));
    memory.set("TotalVirtualMemorySize", sum(line("MemTotal"), line("SwapTotal")));
    memory.set("FreeVirtualMemory", sum(line("MemFree"), line("SwapFree")));
    memory.set("TotalSwapSpaceSize", line("SwapTotal"));
    memory.set("MemAvailable", line("MemAvailable"));
    memory.set("HugePageSize", line("Hugepagesize"));
    memory.set("HugePagesTotal", line("HugePages_Total"));
}

// The size of the memory blocks that are online, in KiB. It is close to the installed memory. The file contains the
// size of a block in hexadecimal.
Count onlineBlocks(const Root& root) {
    const std::string directory = "/sys/devices/system/memory/";
    const Count size = readCount(root.readLine(directory + "block_size_bytes"), 16);
    if (!size) return std::nullopt;
    std::uint64_t count = 0;
    for (const std::string& name : root.list(directory)) {
        if (!name.starts_with("memory")) continue;
        const std::string state = root.readLine(directory + name + "/state");
        if (state == "online" || state == "going-offline") ++count;
    }
    return count > 0 ? product(*size / 1024, count) : std::nullopt;
}

// Leaves the field unknown if the number is 0.
void setKnown(Instance& memory, const char* field, Count number) {
    if (number.value_or(0) > 0) memory.set(field, number);
}

void setSmbios(const Root& root, Instance& memory) {
    const Smbios smbios(root);
    const SmbiosMemory told = readSmbiosMemory(smbios);
    setKnown(memory, "MaximumCapacity", told.maximumCapacity);
    setKnown(memory, "NumberOfMemoryDevices", told.devices);
    setKnown(memory, "InstalledMemory", told.installed);
    memory.set("ErrorCorrection", told.errorCorrection);
}

constexpr const char* kSources[] = {"/proc/meminfo"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const auto fill = [&](Instance& memory) {
        setMeminfo(root, memory);
        setSmbios(root, memory);
        if (memory.get("InstalledMemory").empty()) memory.set("InstalledMemory", onlineBlocks(root));
        setKnown(memory, "NumaNodes", readCpuList(root.readLine("/sys/devices/system/node/online")).size());
    };
    data.addOne(fill, {{"DeviceID", "memory"}});
}

}  // namespace

constexpr Group kMemory{
    .displayName = "Memory", .xmlName = "Memory", .fields = kFields, .gather = gather, .sources = kSources};

}  // namespace toolkit::quorvah
