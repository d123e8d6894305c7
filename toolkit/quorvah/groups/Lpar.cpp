#include <string>
#include <utility>

#include "schema/groups/Lpar.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/DeviceTree.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kMebibyte = std::uint64_t{1} << 20;

// The value of a line "key=value".
std::string_view configured(std::string_view text, std::string_view key) {
    for (std::string_view line; nextLine(text, line);) {
        if (takeField(line, '=') == key) return trimmed(line);
    }
    return {};
}

void setFlag(Instance& partition, const char* field, std::string_view value) {
    if (value == "0" || value == "1") partition.set(field, value == "1");
}

// /proc/ppc64/lparcfg. The firmware states some sizes in MiB, the kernel its own in bytes.
void setPower(const Root& root, const std::string& text, Instance& partition) {
    const auto value = [&text](const char* key) { return configured(text, key); };
    const auto count = [&text](const char* key) { return readCount(configured(text, key)); };
    partition.set("PartitionId", value("partition_id"));
    partition.set("PartitionName", deviceTreeText(root, "ibm,partition-name"));
    partition.set("SerialNumber", value("serial_number"));
    partition.set("SystemType", value("system_type"));
    setFlag(partition, "SharedProcessorMode", value("shared_processor_mode"));
    setFlag(partition, "Capped", value("capped"));
    partition.set("EntitledCapacity", count("partition_entitled_capacity"));
    partition.set("MaxEntitledCapacity", count("partition_max_entitled_capacity"));
    partition.set("ActiveProcessors", count("partition_active_processors"));
    partition.set("PotentialProcessors", count("partition_potential_processors"));
    partition.set("SystemProcessors", count("system_potential_processors"));
    partition.set("MinimumMemory", product(count("MinMem"), kMebibyte));
    partition.set("DesiredMemory", product(count("DesMem"), kMebibyte));
    partition.set("MaximumMemory", count("MaxMem"));
}

// The lines of /proc/sysinfo about the partition.
void setZ(const std::string& text, Instance& partition) {
    const auto value = [&text](const char* key) { return valueForKey(text, key); };
    const std::string_view number = value("LPAR Number");
    if (number.empty()) return;
    partition.set("PartitionId", number);
    partition.set("PartitionName", value("LPAR Name"));
    partition.set("SerialNumber", value("Sequence Code"));
    partition.set("SystemType", value("Type"));
    const std::string_view characteristics = value("LPAR Characteristics");
    if (!characteristics.empty())
        partition.set("SharedProcessorMode", characteristics.find("Shared") != std::string_view::npos);
    partition.set("ActiveProcessors", readCount(value("LPAR CPUs Configured")));
    partition.set("PotentialProcessors", readCount(value("LPAR CPUs Total")));
    partition.set("SystemProcessors", readCount(value("CPUs Total")));
    partition.set("CapacityAdjustment", readCount(value("LPAR Adjustment")));
    partition.set("Characteristics", wordsOf(characteristics));
}

// Without /proc/ppc64/lparcfg the device tree still has the number and the name.
void setDeviceTree(const Root& root, Instance& partition) {
    const std::optional<std::uint32_t> number = deviceTreeNumber(root, "ibm,partition-no");
    if (!number) return;
    partition.set("PartitionId", *number);
    partition.set("PartitionName", deviceTreeText(root, "ibm,partition-name"));
    partition.set("SerialNumber", deviceTreeText(root, "system-id"));
    partition.set("SystemType", deviceTreeText(root, "model"));
}

constexpr const char* kSources[] = {"/proc"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const std::string power = root.read("/proc/ppc64/lparcfg").value_or("");
    const std::string sysinfo = root.read("/proc/sysinfo").value_or("");
    data.addOne([&](Instance& partition) {
        if (!configured(power, "partition_id").empty()) return setPower(root, power, partition);
        setZ(sysinfo, partition);
        if (partition.empty()) setDeviceTree(root, partition);
    });
    const bool hasPartitions = !sysinfo.empty() || root.exists("/proc/ppc64");
    if (data.instances().empty() && !hasPartitions) data.notApplicable("other-processor");
}

}  // namespace

constexpr Group kLpar{.displayName = "Lpar",
                      .xmlName = "Lpar",
                      .fields = schema::kLpar.fields,
                      .gather = gather,
                      .sources = kSources};

}  // namespace toolkit::quorvah
