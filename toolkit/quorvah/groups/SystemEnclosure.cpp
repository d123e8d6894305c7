#include <string>

#include "schema/groups/SystemEnclosure.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/DeviceTree.h"
#include "toolkit/quorvah/sources/DmiId.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/SmbiosNames.h"

namespace toolkit::quorvah {

namespace {

constexpr unsigned kChassis = 3;
constexpr unsigned kLock = 0x80;

// The number of the text follows the list of contained elements, whose length is in the structure.
std::string skuOf(const GatheringContext& context, const SmbiosStructure& chassis) {
    if (!chassis.has(0x13, 2)) return {};
    const std::size_t offset = 0x15 + std::size_t{chassis.byte(0x13)} * chassis.byte(0x14);
    return smbiosText(context, chassis, offset);
}

void setStates(const SmbiosStructure& chassis, Instance& enclosure) {
    enclosure.set("LockPresent", (chassis.byte(0x05) & kLock) != 0);
    enclosure.set("BootupState", chassisStateName(chassis.byte(0x09)));
    enclosure.set("PowerSupplyState", chassisStateName(chassis.byte(0x0A)));
    enclosure.set("ThermalState", chassisStateName(chassis.byte(0x0B)));
    enclosure.set("SecurityStatus", chassisSecurityName(chassis.byte(0x0C)));
    if (chassis.byte(0x11) != 0) enclosure.set("Height", chassis.byte(0x11));
    if (chassis.byte(0x12) != 0) enclosure.set("NumberOfPowerCords", chassis.byte(0x12));
}

void addFromTable(const GatheringContext& context, const Smbios& smbios, GroupData& data) {
    for (const SmbiosStructure* const chassis : smbios.ofType(kChassis)) {
        Instance& enclosure = data.add("Chassis " + std::to_string(data.instances().size()));
        enclosure.set("Manufacturer", smbiosText(context, *chassis, 0x04));
        enclosure.set("ChassisPackageType", chassisTypeName(chassis->byte(0x05) & ~kLock));
        enclosure.set("Version", smbiosText(context, *chassis, 0x06));
        enclosure.set("SerialNumber", smbiosText(context, *chassis, 0x07));
        enclosure.set("AssetTag", smbiosText(context, *chassis, 0x08));
        enclosure.set("SKUNumber", skuOf(context, *chassis));
        setStates(*chassis, enclosure);
    }
}

// The chassis for a value of the property "chassis-type" of a device tree.
std::string_view chassisOfDeviceTree(std::string_view type) {
    constexpr std::pair<std::string_view, std::string_view> kTypes[] = {
        {"desktop", "Desktop"},         {"laptop", "Laptop"},
        {"convertible", "Convertible"}, {"server", "Main Server Chassis"},
        {"tablet", "Tablet"},           {"handset", "Hand Held"},
        {"embedded", "Embedded PC"},
    };
    for (const auto& [name, chassis] : kTypes) {
        if (name == type) return chassis;
    }
    return {};
}

// What every user may read.
void addFromFiles(const GatheringContext& context, GroupData& data) {
    const auto fill = [&context](Instance& enclosure) {
        enclosure.set("Manufacturer", dmiText(context, "chassis_vendor"));
        const Count type = readCount(dmiText(context, "chassis_type"));
        if (type) enclosure.set("ChassisPackageType", chassisTypeName(static_cast<unsigned>(*type & 0x7FU)));
        if (!type)
            enclosure.set("ChassisPackageType",
                          chassisOfDeviceTree(deviceTreeText(context.root(), "chassis-type")));
        enclosure.set("Version", dmiText(context, "chassis_version"));
        enclosure.set("SerialNumber", dmiText(context, "chassis_serial"));
        enclosure.set("AssetTag", dmiText(context, "chassis_asset_tag"));
    };
    data.addOne(fill, {{"Tag", "Chassis 0"}});
}

constexpr const char* kSources[] = {"/sys", "/proc/device-tree"};

void gather(GatheringContext& context, GroupData& data) {
    const Smbios smbios(context.root());
    addFromTable(context, smbios, data);
    if (smbios.damaged()) data.partial("smbios-broken");
    if (data.instances().empty()) addFromFiles(context, data);
    if (data.instances().empty() && !hasSmbios(context.root())) data.notApplicable("no-smbios");
}

}  // namespace

constexpr Group kSystemEnclosure{.displayName = "System Enclosure",
                                 .xmlName = "SystemEnclosure",
                                 .fields = schema::kSystemEnclosure.fields,
                                 .gather = gather,
                                 .sources = kSources};

}  // namespace toolkit::quorvah
