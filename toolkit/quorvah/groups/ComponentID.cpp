#include <cstddef>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kest/Ascii.h"
#include "schema/groups/ComponentID.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/DeviceTree.h"
#include "toolkit/quorvah/sources/DmiId.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

struct FirmwareField {
    const char* field;
    const char* file;
    std::size_t offset;  // of the text in structure type 1
};
constexpr FirmwareField kFirmwareFields[] = {
    {"Manufacturer", "sys_vendor", 0x04}, {"ProductName", "product_name", 0x05},
    {"Version", "product_version", 0x06}, {"SerialNumber", "product_serial", 0x07},
    {"SKUNumber", "product_sku", 0x19},   {"Family", "product_family", 0x1A},
};

void setFirmware(const GatheringContext& context, Instance& system) {
    system.set("UUID", dmiUuid(context));
    for (const FirmwareField& field : kFirmwareFields) system.set(field.field, dmiText(context, field.file));
}

void setIfEmpty(Instance& system, const char* field, std::string_view value) {
    if (system.get(field).empty()) system.set(field, value);
}

// From the tables, for kernels that do not export their texts or not all of them.
void setTables(const GatheringContext& context, Instance& system) {
    constexpr unsigned kSystem = 1;
    const Smbios smbios(context.root());
    const std::vector<const SmbiosStructure*> systems = smbios.ofType(kSystem);
    if (systems.empty()) return;
    setIfEmpty(system, "UUID", context.firmwareText(smbiosUuid(*systems.front(), smbios.version())));
    for (const FirmwareField& field : kFirmwareFields)
        setIfEmpty(system, field.field, smbiosText(context, *systems.front(), field.offset));
}

// The names of makers by their prefixes in device trees.
std::string_view boardMaker(std::string_view compatible) {
    constexpr std::pair<std::string_view, std::string_view> kMakers[] = {
        {"apple", "Apple"},
        {"asus", "ASUS"},
        {"beagle", "BeagleBoard.org"},
        {"friendlyarm", "FriendlyElec"},
        {"google", "Google"},
        {"hardkernel", "Hardkernel"},
        {"ibm", "IBM"},
        {"khadas", "Khadas"},
        {"lenovo", "Lenovo"},
        {"loongson", "Loongson"},
        {"nvidia", "NVIDIA"},
        {"pine64", "Pine64"},
        {"radxa", "Radxa"},
        {"raspberrypi", "Raspberry Pi"},
        {"samsung", "Samsung"},
        {"sifive", "SiFive"},
        {"sipeed", "Sipeed"},
        {"starfive", "StarFive"},
        {"toradex", "Toradex"},
        {"xunlong", "Xunlong"},
    };
    if (compatible.find(',') == std::string_view::npos) return {};
    const std::string_view prefix = takeField(compatible, ',');
    for (const auto& [known, name] : kMakers) {
        if (kest::equalsIgnoringCase(prefix, known)) return name;
    }
    return {};
}

void setDeviceTree(const GatheringContext& context, Instance& system) {
    const auto text = [&context](const char* property) {
        return context.firmwareText(deviceTreeText(context.root(), property));
    };
    const std::string model = text("model");
    // On POWER, the model has the prefix, too: "IBM,9009-42A".
    setIfEmpty(system, "Manufacturer", boardMaker(model));
    setIfEmpty(system, "Manufacturer", boardMaker(text("compatible")));
    setIfEmpty(system, "UUID", text("vm,uuid"));
    setIfEmpty(system, "ProductName", model);
    setIfEmpty(system, "SerialNumber", text("serial-number"));
    // POWER: "IBM,0278ABCDE". On virtual machines it repeats the UUID.
    const std::string id = text("system-id");
    if (id.starts_with("IBM,")) setIfEmpty(system, "SerialNumber", id);
}

// Boards with ARM processors and machines with PowerPC processors are described behind the processors.
void setCpuInfo(const GatheringContext& context, Instance& system) {
    if (!system.get("ProductName").empty() && !system.get("SerialNumber").empty()) return;
    const CpuInfo info(context.root().read("/proc/cpuinfo").value_or(""));
    const auto text = [&](std::string_view key) {
        return context.firmwareText(std::string(info.value(key)));
    };
    if (!info.value("platform").empty()) {
        const std::string model = text("model");
        setIfEmpty(system, "Manufacturer", boardMaker(model));
        setIfEmpty(system, "ProductName", model);
    } else if (!info.value("CPU architecture").empty()) {
        setIfEmpty(system, "ProductName", text("Model"));
        setIfEmpty(system, "SerialNumber", text("Serial"));
    }
}

// /proc/sysinfo exists on s390x only.
void setSysinfo(const GatheringContext& context, Instance& system) {
    const std::string sysinfo = context.root().read("/proc/sysinfo").value_or("");
    if (sysinfo.empty()) return;
    system.set("Manufacturer", valueForKey(sysinfo, "Manufacturer"));
    system.set("ProductName", valueForKey(sysinfo, "Type"));
    std::string_view model = valueForKey(sysinfo, "Model");
    system.set("Version", nextWord(model));
    system.set("SerialNumber", valueForKey(sysinfo, "Sequence Code"));
}

constexpr const char* kSources[] = {"/sys/class/dmi/id", "/sys/devices/virtual/dmi/id",
                                    "/sys/firmware",     "/proc/device-tree",
                                    "/proc/sysinfo",     "/proc/cpuinfo",
                                    "/etc/machine-id"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    data.addOne([&](Instance& system) {
        setFirmware(context, system);
        setTables(context, system);
        setDeviceTree(context, system);
        setCpuInfo(context, system);
        setSysinfo(context, system);
        system.set("Name", hostName(root));
        const std::string machine = root.readLine("/etc/machine-id");
        if (machine != "uninitialized") system.set("MachineId", machine);
        system.set("BootId", root.readLine("/proc/sys/kernel/random/boot_id"));
    });
}

}  // namespace

constexpr Group kComponentID{.displayName = "ComponentID",
                             .xmlName = "ComponentID",
                             .fields = schema::kComponentID.fields,
                             .gather = gather,
                             .sources = kSources};

}  // namespace toolkit::quorvah
