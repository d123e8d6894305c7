#include <string>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

constexpr FieldDef kFields[] = {
    {"UUID", FieldDef::kPrivate},
    {"Manufacturer"},
    {"ProductName"},
    {"Version"},
    {"SerialNumber", FieldDef::kPrivate},
    {"SKUNumber"},
    {"Family"},
    {"Name", FieldDef::kPrivate},
    {"MachineId", FieldDef::kPrivate},
    {"BootId", FieldDef::kVolatile | FieldDef::kPrivate},
};

void setFirmware(const GatheringContext& context, Instance& system) {
    const std::pair<const char*, const char*> files[] = {
        {"UUID", "product_uuid"},       {"Manufacturer", "sys_vendor"},     {"ProductName", "product_name"},
        {"Version", "product_version"}, {"SerialNumber", "product_serial"}, {"SKUNumber", "product_sku"},
        {"Family", "product_family"},
    };
    for (const auto& [field, file] : files) {
        system.set(field,
                   context.firmwareText(context.root().readLine(std::string("/sys/class/dmi/id/") + file)));
    }
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

constexpr const char* kSources[] = {"/sys/class/dmi/id", "/sys/firmware", "/proc/device-tree",
                                    "/proc/sysinfo", "/etc/machine-id"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    data.addOne([&](Instance& system) {
        setFirmware(context, system);
        setDeviceTree(context, system);
        setSysinfo(context, system);
        system.set("Name", hostName(root));
        system.set("MachineId", root.readLine("/etc/machine-id"));
        system.set("BootId", root.readLine("/proc/sys/kernel/random/boot_id"));
    });
}

}  // namespace

constexpr Group kComponentID{.displayName = "ComponentID",
                             .xmlName = "ComponentID",
                             .fields = kFields,
                             .gather = gather,
                             .sources = kSources};

}  // namespace toolkit::quorvah
