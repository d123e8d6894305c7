#include <charconv>
#include <string>

#include "toolkit/quorvah/CpuList.h"
#include "toolkit/quorvah/GroupTable.h"
#include "toolkit/quorvah/Report.h"
#include "toolkit/quorvah/Scan.h"
#include "toolkit/quorvah/SmbiosMemory.h"
#include "toolkit/quorvah/Words.h"

namespace toolkit::quorvah {

namespace {

constexpr FieldDef kFields[] = {
    {"DeviceID"},
    {"TotalVisibleMemorySize"},
    {"FreePhysicalMemory", FieldDef::kVolatile},
    {"TotalVirtualMemorySize"},
    {"FreeVirtualMemory", FieldDef::kVolatile},
    {"TotalSwapSpaceSize"},
    {"MaximumCapacity"},
    {"NumberOfMemoryDevices"},
    {"InstalledMemory"},
    {"MemAvailable", FieldDef::kVolatile},
    {"NumaNodes"},
    {"HugePageSize"},
    {"HugePagesTotal"},
    {"ErrorCorrection"},
};

std::optional<std::int64_t> sum(std::optional<std::int64_t> left, std::optional<std::int64_t> right) {
    if (!left || !right) return std::nullopt;
    return *left + *right;
}

void setMeminfo(const Root& root, Instance& memory) {
    const std::string meminfo = root.read("/proc/meminfo").value_or("");
    const auto line = [&meminfo](const char* key) { return leadingNumber(valueOf(meminfo, key)); };
    memory.set("TotalVisibleMemorySize", line("MemTotal"));
    memory.set("FreePhysicalMemory", line("MemFree"));
    memory.set("TotalVirtualMemorySize", sum(line("MemTotal"), line("SwapTotal")));
    memory.set("FreeVirtualMemory", sum(line("MemFree"), line("SwapFree")));
    memory.set("TotalSwapSpaceSize", line("SwapTotal"));
    memory.set("MemAvailable", line("MemAvailable"));
    memory.set("HugePageSize", line("Hugepagesize"));
    memory.set("HugePagesTotal", line("HugePages_Total"));
}

// KiB of the blocks of memory that are in use, which come close to what is built in. The size of a block is
// in hexadecimal.
std::optional<std::int64_t> onlineBlocks(const Root& root) {
    const std::string directory = "/sys/devices/system/memory/";
    const std::string text = root.readLine(directory + "block_size_bytes");
    std::int64_t size = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), size, 16);
    if (error != std::errc() || size <= 0 || size > (std::int64_t{1} << 46)) return std::nullopt;
    std::int64_t count = 0;
    for (const std::string& name : root.list(directory)) {
        if (!name.starts_with("memory")) continue;
        const std::string state = root.readLine(directory + name + "/state");
        if (state == "online" || state == "going-offline") ++count;
    }
    return count > 0 ? std::optional(size / 1024 * count) : std::nullopt;
}

// A number of which 0 means that nothing is known.
void setKnown(Instance& memory, const char* field, std::uint64_t number) {
    if (number > 0) memory.set(field, number);
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

void gather(Scan& scan, Report& report) {
    const Root& root = scan.root();
    Instance memory = report.blank();
    setMeminfo(root, memory);
    setSmbios(root, memory);
    if (memory.get("InstalledMemory").empty()) memory.set("InstalledMemory", onlineBlocks(root));
    setKnown(memory, "NumaNodes", readCpuList(root.readLine("/sys/devices/system/node/online")).size());
    if (memory.empty()) return;
    memory.set("DeviceID", "memory");
    report.add() = memory;
}

}  // namespace

constexpr Group kMemory{"Memory", "Memory", kFields, gather, false, kSources};

}  // namespace toolkit::quorvah
