#include <string>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/Report.h"
#include "toolkit/quorvah/sources/Scan.h"
#include "toolkit/quorvah/sources/System.h"
#include "toolkit/quorvah/sources/Words.h"

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

void setFirmware(const Scan& scan, Instance& system) {
    const std::pair<const char*, const char*> files[] = {
        {"UUID", "product_uuid"},       {"Manufacturer", "sys_vendor"},     {"ProductName", "product_name"},
        {"Version", "product_version"}, {"SerialNumber", "product_serial"}, {"SKUNumber", "product_sku"},
        {"Family", "product_family"},
    };
    for (const auto& [field, file] : files) {
        system.set(field, scan.firmwareText(scan.root().readLine(std::string("/sys/class/dmi/id/") + file)));
    }
}

// The texts of a device tree end with a zero.
std::string deviceTreeText(const Scan& scan, const std::string& file) {
    const std::string text = scan.root().read("/proc/device-tree/" + file).value_or("");
    return scan.firmwareText(text.substr(0, text.find('\0')));
}

void setDeviceTree(const Scan& scan, Instance& system) {
    if (system.get("ProductName").empty()) system.set("ProductName", deviceTreeText(scan, "model"));
    if (system.get("SerialNumber").empty()) system.set("SerialNumber", deviceTreeText(scan, "serial-number"));
}

// Of an s390x machine.
void setSysinfo(const Scan& scan, Instance& system) {
    const std::string sysinfo = scan.root().read("/proc/sysinfo").value_or("");
    if (sysinfo.empty()) return;
    system.set("Manufacturer", valueOf(sysinfo, "Manufacturer"));
    system.set("ProductName", valueOf(sysinfo, "Type"));
    std::string_view model = valueOf(sysinfo, "Model");
    system.set("Version", nextWord(model));
    system.set("SerialNumber", valueOf(sysinfo, "Sequence Code"));
}

constexpr const char* kSources[] = {"/sys/class/dmi/id", "/sys/firmware", "/proc/device-tree",
                                    "/proc/sysinfo", "/etc/machine-id"};

void gather(Scan& scan, Report& report) {
    const Root& root = scan.root();
    report.addOne([&](Instance& system) {
        setFirmware(scan, system);
        setDeviceTree(scan, system);
        setSysinfo(scan, system);
        system.set("Name", hostName(root));
        system.set("MachineId", root.readLine("/etc/machine-id"));
        system.set("BootId", root.readLine("/proc/sys/kernel/random/boot_id"));
    });
}

}  // namespace

constexpr Group kComponentID{"ComponentID", "ComponentID", kFields, gather, false, kSources};

}  // namespace toolkit::quorvah
