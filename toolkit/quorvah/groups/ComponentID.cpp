#include <cstddef>
#include <string>
#include <vector>

#include "schema/groups/ComponentID.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
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

// From the tables, for kernels that do not export their texts.
void setTables(const GatheringContext& context, Instance& system) {
    constexpr unsigned kSystem = 1;
    const bool exported = !system.get("ProductName").empty() || !system.get("Manufacturer").empty();
    if (exported) return;
    const Smbios smbios(context.root());
    const std::vector<const SmbiosStructure*> systems = smbios.ofType(kSystem);
    if (systems.empty()) return;
    system.set("UUID", context.firmwareText(smbiosUuid(*systems.front(), smbios.version())));
    for (const FirmwareField& field : kFirmwareFields)
        system.set(field.field, smbiosText(context, *systems.front(), field.offset));
}

// Texts in a device tree are terminated by a zero byte.
std::string deviceTreeText(const GatheringContext& context, const std::string& file) {
    const std::string text = context.root().read("/proc/device-tree/" + file).value_or("");
    return context.firmwareText(text.substr(0, text.find('\0')));
}

void setDeviceTree(const GatheringContext& context, Instance& system) {
    if (system.get("ProductName").empty()) system.set("ProductName", deviceTreeText(context, "model"));
    if (system.get("SerialNumber").empty())
        system.set("SerialNumber", deviceTreeText(context, "serial-number"));
    // POWER: "IBM,0278ABCDE". On virtual machines it repeats the UUID.
    const std::string id = deviceTreeText(context, "system-id");
    if (system.get("SerialNumber").empty() && id.starts_with("IBM,")) system.set("SerialNumber", id);
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
                                    "/proc/sysinfo",     "/etc/machine-id"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    data.addOne([&](Instance& system) {
        setFirmware(context, system);
        setTables(context, system);
        setDeviceTree(context, system);
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
