#include <algorithm>
#include <string>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/BlockDevices.h"
#include "toolkit/quorvah/sources/BusAddress.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/UdevData.h"

namespace toolkit::quorvah {

namespace {

constexpr FieldDef kFields[] = {
    {"DeviceID"},
    {"Name"},
    {"Manufacturer"},
    {"Model"},
    {"SerialNumber", FieldDef::kPrivate},
    {"FirmwareRevision"},
    {"Size", FieldDef::kCount},
    {"BlockSize", FieldDef::kCount},
    {"NumberOfBlocks", FieldDef::kCount},
    {"MediaType"},
    {"InterfaceType"},
    {"PhysicalBlockSize", FieldDef::kCount},
    {"WorldWideName", FieldDef::kPrivate},
    {"Removable"},
    {"ReadOnly"},
    {"BusAddress"},
    {"Multipath"},
};

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// The interface of a disk, derived from the innermost known component of its path in sysfs. Empty if the path does
// not show it, as for the disks of most RAID controllers.
std::string_view interfaceOf(const BlockDevice& disk, std::string_view udev) {
    const std::string& place = disk.place();
    const std::pair<std::string_view, std::string_view> marks[] = {
        {"/nvme", "NVMe"},     {"/mmc_host/", "MMC"},   {"/usb", "USB"},       {"/ata", "SATA"},
        {"/session", "iSCSI"}, {"/end_device-", "SAS"}, {"/virtio", "virtio"},
    };
    for (const auto& [mark, name] : marks) {
        if (contains(place, mark)) return name;
    }
    if (disk.name().starts_with("nvme")) return "NVMe";
    if (disk.name().starts_with("mmcblk")) return "MMC";
    if (disk.name().starts_with("vd")) return "virtio";
    const std::string_view bus = udevProperty(udev, "ID_BUS");
    if (bus == "ata") return "SATA";
    return bus == "usb" ? "USB" : "";
}

// The host does not tell a virtual machine what its disks are made of.
std::string_view mediaOf(const BlockDevice& disk, std::string_view interface) {
    constexpr std::uint64_t kCdRom = 5;  // the SCSI device type
    if (disk.name().starts_with("sr") || disk.number("device/type") == kCdRom) return "Optical";
    if (interface == "MMC") return "Flash";
    if (interface == "virtio") return {};
    const std::optional<bool> rotational = disk.flag("queue/rotational");
    // USB flash drives report that they rotate.
    if (interface == "USB" && disk.flag("removable").value_or(false)) return "Flash";
    if (!rotational) return {};
    return *rotational ? "HDD" : "SSD";
}

// The serial number in the SCSI page 80h: a header of four bytes, then the text.
std::string pageSerial(const BlockDevice& disk) {
    constexpr std::size_t kHeader = 4;
    const std::string page = disk.content("device/vpd_pg80").value_or("");
    if (page.size() <= kHeader) return {};
    const std::size_t length = static_cast<unsigned char>(page[3]);
    const std::string_view text = std::string_view(page).substr(kHeader, length);
    return std::string(trimmed(text.substr(0, text.find('\0'))));
}

std::string serialOf(const BlockDevice& disk, std::string_view udev) {
    for (const char* const file : {"serial", "device/serial"}) {
        std::string serial = disk.line(file);
        if (!serial.empty()) return serial;
    }
    std::string serial = pageSerial(disk);
    if (serial.empty()) serial = udevProperty(udev, "ID_SERIAL_SHORT");
    return serial;
}

// The name without the "0x" of udev and the authority of sysfs. A "t10." name is not a number: it repeats maker,
// model and serial number.
std::string worldWideName(const BlockDevice& disk, std::string_view udev) {
    std::string name(udevProperty(udev, "ID_WWN_WITH_EXTENSION"));
    if (name.empty()) name = udevProperty(udev, "ID_WWN");
    if (name.empty()) name = disk.line("wwid");
    if (name.empty()) name = disk.line("device/wwid");
    for (const std::string_view prefix : {"0x", "naa.", "eui.", "uuid."}) {
        if (name.starts_with(prefix)) return name.substr(prefix.size());
    }
    return {};
}

// The first text that one of the files has. A hexadecimal number is an id and not a name.
std::string firstText(const GatheringContext& context, const BlockDevice& disk,
                      std::initializer_list<const char*> files) {
    for (const char* const file : files) {
        const std::string text = disk.line(file);
        if (!text.empty() && !text.starts_with("0x")) return context.firmwareText(text);
    }
    return {};
}

// "0:0:0:0" for a SCSI disk, or else the PCI address of the controller.
std::string busAddress(const BlockDevice& disk) {
    const std::string link = disk.link("device");
    std::string name = link.substr(link.rfind('/') + 1);
    if (std::ranges::count(name, ':') == 3) return name;
    return std::string(pciAddressIn(disk.place()));
}

// Whether the name is that of a controller, "nvme0", and not that of a disk, "nvme0n1".
bool isNvmeController(std::string_view name) {
    return name.starts_with("nvme") && name.size() > 4 &&
           name.find_first_not_of("0123456789", 4) == std::string_view::npos;
}

// Whether the disk is one of several paths to the same disk, or represents them.
bool isMultipath(const Root& root, const BlockDevice& disk) {
    for (const std::string& holder : disk.list("holders")) {
        if (root.readLine("/sys/block/" + holder + "/dm/uuid").starts_with("mpath-")) return true;
    }
    if (!contains(disk.place(), "/nvme-subsystem/")) return false;
    return std::ranges::count_if(disk.list("device"), isNvmeController) > 1;
}

void setSize(const BlockDevice& disk, Instance& drive) {
    const Count size = disk.bytes("size");
    const Count block = disk.blockSize();
    drive.set("Size", size);
    drive.set("BlockSize", block);
    if (size && block) drive.set("NumberOfBlocks", *size / *block);
    drive.set("PhysicalBlockSize", disk.number("queue/physical_block_size"));
}

void setNames(const GatheringContext& context, const BlockDevice& disk, std::string_view udev,
              Instance& drive) {
    std::string manufacturer = firstText(context, disk, {"device/vendor"});
    // The kernel reports "ATA" as the vendor of every ATA disk.
    if (manufacturer == "ATA") manufacturer.clear();
    drive.set("Manufacturer", std::move(manufacturer));
    drive.set("Model", firstText(context, disk, {"device/model", "device/name"}));
    drive.set("SerialNumber", context.firmwareText(serialOf(disk, udev)));
    drive.set("FirmwareRevision",
              firstText(context, disk, {"device/firmware_rev", "device/rev", "device/fwrev"}));
    drive.set("WorldWideName", worldWideName(disk, udev));
}

constexpr const char* kSources[] = {"/sys/block", "/sys/class/block"};

void gather(GatheringContext& context, GroupData& data) {
    for (const BlockDevice& disk : blockDevices(context.root())) {
        if (!isDrive(disk)) continue;
        const std::string udev = disk.udevData();
        const std::string_view interface = interfaceOf(disk, udev);
        Instance& drive = data.add(disk.path());
        drive.set("Name", disk.name());
        setNames(context, disk, udev, drive);
        setSize(disk, drive);
        drive.set("MediaType", mediaOf(disk, interface));
        drive.set("InterfaceType", interface);
        drive.set("Removable", disk.flag("removable"));
        drive.set("ReadOnly", disk.flag("ro"));
        drive.set("BusAddress", busAddress(disk));
        drive.set("Multipath", isMultipath(context.root(), disk));
    }
}

}  // namespace

constexpr Group kStorage{
    .displayName = "Storage", .xmlName = "Storage", .fields = kFields, .gather = gather, .sources = kSources};

}  // namespace toolkit::quorvah
