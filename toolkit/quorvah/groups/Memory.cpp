#include <algorithm>
#include <string>
#include <string_view>

#include "schema/groups/Memory.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CpuList.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/InstalledMemory.h"
#include "toolkit/quorvah/sources/KeyValueText.h"
#include "toolkit/quorvah/sources/SmbiosMemory.h"

namespace toolkit::quorvah {

namespace {

void setMeminfo(const Root& root, Instance& memory) {
    const std::string meminfo = root.read("/proc/meminfo").value_or("");
    const auto line = [&meminfo](const char* key) { return kibOfKey(meminfo, key); };
    memory.set("TotalVisibleMemorySize", line("MemTotal"));
    memory.set("FreePhysicalMemory", line("MemFree"));
    memory.set("TotalVirtualMemorySize", sum(line("MemTotal"), line("SwapTotal")));
    memory.set("FreeVirtualMemory", sum(line("MemFree"), line("SwapFree")));
    memory.set("TotalSwapSpaceSize", line("SwapTotal"));
    memory.set("MemAvailable", line("MemAvailable"));
    memory.set("HugePageSize", line("Hugepagesize"));
    memory.set("HugePagesTotal", readCount(valueForKey(meminfo, "HugePages_Total")));
}

// Leaves the field unknown if the number is 0.
void setKnown(Instance& memory, const char* field, Count number) {
    if (number.value_or(0) > 0) memory.set(field, number);
}

void setSmbios(const SmbiosMemory& told, Instance& memory) {
    setKnown(memory, "MaximumCapacity", told.maximumCapacity);
    setKnown(memory, "NumberOfMemoryDevices", told.devices);
    memory.set("ErrorCorrection", told.errorCorrection);
}

std::size_t countNodes(const Root& root) {
    const std::string nodes = "/sys/devices/system/node/";
    const std::size_t online = readCpuList(root.readLine(nodes + "online")).size();
    if (online > 0) return online;
    const auto isNode = [](const std::string& name) {
        return name.starts_with("node") && readCount(std::string_view(name).substr(4));
    };
    return static_cast<std::size_t>(std::ranges::count_if(root.list(nodes), isNode));
}

constexpr const char* kSources[] = {"/proc/meminfo"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const auto fill = [&](Instance& memory) {
        setMeminfo(root, memory);
        const SmbiosMemory told = readSmbiosMemory(Smbios(root));
        setSmbios(told, memory);
        setKnown(memory, "InstalledMemory", installedMemory(readMemoryOnline(root), told.installed));
        setKnown(memory, "NumaNodes", countNodes(root));
    };
    data.addOne(fill, {{"DeviceID", "memory"}});
}

}  // namespace

constexpr Group kMemory{.displayName = "Memory",
                        .xmlName = "Memory",
                        .fields = schema::kMemory.fields,
                        .gather = gather,
                        .sources = kSources};

}  // namespace toolkit::quorvah
