#include "toolkit/quorvah/sources/MachineIdentity.h"

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "kest/Ascii.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/DeviceTree.h"
#include "toolkit/quorvah/sources/DmiId.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

struct FirmwareField {
    std::string MachineIdentity::*field;
    const char* file;
    std::size_t offset;  // of the text in structure type 1
};
constexpr FirmwareField kFirmwareFields[] = {
    {&MachineIdentity::manufacturer, "sys_vendor", 0x04},
    {&MachineIdentity::productName, "product_name", 0x05},
    {&MachineIdentity::version, "product_version", 0x06},
    {&MachineIdentity::serialNumber, "product_serial", 0x07},
    {&MachineIdentity::skuNumber, "product_sku", 0x19},
    {&MachineIdentity::family, "product_family", 0x1A},
};

void setFirmware(const GatheringContext& context, MachineIdentity& system) {
    system.uuid = dmiUuid(context);
    for (const FirmwareField& field : kFirmwareFields) system.*field.field = dmiText(context, field.file);
}

void setIfEmpty(std::string& field, std::string_view value) {
    if (field.empty()) field = value;
}

// From the tables, for kernels that do not export their texts or not all of them.
void setTables(const GatheringContext& context, MachineIdentity& system) {
    constexpr unsigned kSystem = 1;
    const Smbios smbios(context.root());
    const std::vector<const SmbiosStructure*> systems = smbios.ofType(kSystem);
    if (systems.empty()) return;
    setIfEmpty(system.uuid, context.firmwareText(smbiosUuid(*systems.front(), smbios.version())));
    for (const FirmwareField& field : kFirmwareFields)
        setIfEmpty(system.*field.field, smbiosText(context, *systems.front(), field.offset));
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

void setDeviceTree(const GatheringContext& context, MachineIdentity& system) {
    const auto text = [&context](const char* property) {
        return context.firmwareText(deviceTreeText(context.root(), property));
    };
    const std::string model = text("model");
    // On POWER, the model has the prefix, too: "IBM,9009-42A".
    setIfEmpty(system.manufacturer, boardMaker(model));
    setIfEmpty(system.manufacturer, boardMaker(text("compatible")));
    setIfEmpty(system.uuid, text("vm,uuid"));
    setIfEmpty(system.productName, model);
    setIfEmpty(system.serialNumber, text("serial-number"));
    // POWER: "IBM,0278ABCDE". On virtual machines it repeats the UUID.
    const std::string id = text("system-id");
    if (id.starts_with("IBM,")) setIfEmpty(system.serialNumber, id);
}

// Boards with ARM processors and machines with PowerPC processors are described behind the processors.
void setCpuInfo(const GatheringContext& context, MachineIdentity& system) {
    if (!system.productName.empty() && !system.serialNumber.empty()) return;
    const CpuInfo info(context.root().read("/proc/cpuinfo").value_or(""));
    const auto text = [&](std::string_view key) {
        return context.firmwareText(std::string(info.value(key)));
    };
    if (!info.value("platform").empty()) {
        const std::string model = text("model");
        setIfEmpty(system.manufacturer, boardMaker(model));
        setIfEmpty(system.productName, model);
    } else if (!info.value("CPU architecture").empty()) {
        setIfEmpty(system.productName, text("Model"));
        setIfEmpty(system.serialNumber, text("Serial"));
    }
}

// /proc/sysinfo exists on s390x only.
void setSysinfo(const GatheringContext& context, MachineIdentity& system) {
    const std::string sysinfo = context.root().read("/proc/sysinfo").value_or("");
    if (sysinfo.empty()) return;
    system.manufacturer = valueForKey(sysinfo, "Manufacturer");
    system.productName = valueForKey(sysinfo, "Type");
    std::string_view model = valueForKey(sysinfo, "Model");
    system.version = nextWord(model);
    system.serialNumber = valueForKey(sysinfo, "Sequence Code");
}

}  // namespace

MachineIdentity readMachineIdentity(const GatheringContext& context) {
    MachineIdentity system;
    setFirmware(context, system);
    setTables(context, system);
    setDeviceTree(context, system);
    setCpuInfo(context, system);
    setSysinfo(context, system);
    return system;
}

}  // namespace toolkit::quorvah
