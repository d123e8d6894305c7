#include <algorithm>
#include <optional>
#include <string>
#include <utility>

#include "schema/groups/Storage.h"
#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/AtaIdentity.h"
#include "toolkit/quorvah/sources/BlockDevices.h"
#include "toolkit/quorvah/sources/BusAddress.h"
#include "toolkit/quorvah/sources/DriveInterface.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/UdevData.h"

namespace toolkit::quorvah {

namespace {

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

bool isOptical(const BlockDevice& disk) {
    constexpr std::uint64_t kCdRom = 5;  // the SCSI device type
    return disk.name().starts_with("sr") || disk.number("device/type") == kCdRom;
}

// The identity of an ATA disk: in sysfs since Linux 6.0, in the name of a disk that has no other, or from its driver. The
// last needs root, and is asked only if udev has not done so.
std::optional<AtaIdentity> ataIdentity(const BlockDevice& disk, std::string_view udev) {
    if (std::optional<AtaIdentity> identity = ataIdentityOfPage(disk.content("device/vpd_pg89").value_or("")))
        return identity;
    const bool ata =
        disk.line("device/vendor") == "ATA" || (isOptical(disk) && contains(disk.place(), "/ata"));
    if (!ata) return std::nullopt;
    if (disk.root().live() && udevProperty(udev, "ID_SERIAL_SHORT").empty()) {
        const kest::Descriptor file = disk.root().open(disk.path());
        if (std::optional<AtaIdentity> identity = askAtaIdentity(file)) return identity;
    }
    return ataIdentityOfName(disk.line("device/wwid"));
}

// The rotation rate that the disk tells; 0 if it was asked and does not tell.
Count toldRotation(const BlockDevice& disk, const AtaIdentity* identity, std::string_view udev) {
    const std::string page = disk.content("device/vpd_pgb1").value_or("");
    constexpr std::size_t kRate = 4;
    if (page.size() >= kRate + 2 && page[1] == '\xB1')
        return rotationRate(bigEndian(page, kRate, 2)).value_or(0);
    if (identity != nullptr && identity->rotation) return identity->rotation;
    const Count ofUdev = readCount(udevProperty(udev, "ID_ATA_ROTATION_RATE_RPM"));
    return ofUdev == 0 ? Count(1) : ofUdev;  // udev writes 0 for a disk that does not rotate
}

// Whether the disk stands for one that the system does not see: that of a virtual machine's host or of a mainframe. What
// the kernel says of its rotation is then a setting of the driver, or a default.
bool hidesMedium(const BlockDevice& disk) {
    for (const char* const prefix : {"xvd", "dasd", "rbd"}) {
        if (disk.name().starts_with(prefix)) return true;
    }
    const std::string vendor = disk.line("device/vendor");
    const std::string model = disk.line("device/model");
    return vendor.starts_with("VMware") || vendor == "QEMU" || vendor == "Msft" || vendor == "VBOX" ||
           model.starts_with("QEMU HARDDISK") || model.starts_with("VBOX HARDDISK") ||
           model.starts_with("VMware Virtual");
}

// The kernel calls every disk rotational that does not tell otherwise. Disks on SATA and SAS tell. Of virtio disks, only
// those that are SCSI disks can tell.
std::string_view mediaOf(const BlockDevice& disk, std::string_view interface, const AtaIdentity* identity,
                         std::string_view udev) {
    if (isOptical(disk)) return "Optical";
    if (interface == "MMC") return "Flash";
    if (interface == "virtio" && !disk.name().starts_with("sd")) return {};
    const Count told = toldRotation(disk, identity, udev);
    if (told.value_or(0) > 0) return *told == 1 ? "SSD" : "HDD";
    if (hidesMedium(disk)) return {};
    const std::optional<bool> rotational = disk.flag("queue/rotational");
    if (rotational == false) return "SSD";
    const bool tells = interface == "SATA" || interface == "SAS";
    return rotational == true && tells && !told ? "HDD" : "";
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

// The serial number of the USB device that a disk is part of.
std::string usbSerial(const BlockDevice& disk) {
    const std::string_view device = usbDeviceIn(disk.place());
    if (device.empty()) return {};
    const Root& root = disk.root();
    std::string serial = root.readLine("/sys/bus/usb/devices/" + std::string(device) + "/serial");
    const std::size_t devices = disk.place().find("devices/");
    if (!serial.empty() || devices == std::string::npos) return serial;
    const std::string component = "/" + std::string(device) + "/";
    const std::size_t at = disk.place().find(component);
    if (at == std::string::npos || at < devices) return {};
    return root.readLine("/sys/" + disk.place().substr(devices, at - devices) + component + "serial");
}

// udev replaces characters beyond ASCII, so that it comes last.
std::string serialOf(const BlockDevice& disk, const AtaIdentity* identity, std::string_view udev) {
    for (const char* const file : {"serial", "device/serial"}) {
        const std::string serial = disk.line(file);
        if (!serial.empty()) return serial.substr(serial.starts_with("0x") ? 2 : 0);
    }
    std::string serial = pageSerial(disk);
    if (serial.empty() && identity != nullptr) serial = identity->serial;
    if (serial.empty()) serial = usbSerial(disk);
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

// Whether the name is that of a controller, "nvme0", and not that of a disk, "nvme0n1".
bool isNvmeController(std::string_view name) {
    return name.starts_with("nvme") && name.size() > 4 &&
           name.find_first_not_of("0123456789", 4) == std::string_view::npos;
}

// Whether the disk is that of an NVMe subsystem, which stands above its controllers.
bool isOfSubsystem(const BlockDevice& disk) {
    return contains(disk.place(), "/nvme-subsystem/");
}

std::vector<std::string> nvmeControllers(const BlockDevice& disk) {
    std::vector<std::string> names = disk.list("device");
    std::erase_if(names, [](const std::string& name) { return !isNvmeController(name); });
    return names;
}

// "0:0:0:0" for a SCSI disk, or else the PCI address of the controller. Empty for an NVMe disk with several controllers.
std::string busAddress(const BlockDevice& disk) {
    const std::string link = disk.link("device");
    std::string name = link.substr(link.rfind('/') + 1);
    if (std::ranges::count(name, ':') == 3) return name;
    const std::string_view address = pciAddressIn(disk.place());
    if (!address.empty() || !isOfSubsystem(disk)) return std::string(address);
    const std::vector<std::string> controllers = nvmeControllers(disk);
    return controllers.size() == 1 ? std::string(pciAddressIn(disk.link("device/" + controllers.front())))
                                   : "";
}

// Whether the disk is one of several paths to the same disk, or represents them.
bool isMultipath(const Root& root, const BlockDevice& disk) {
    for (const std::string& holder : disk.list("holders")) {
        if (root.readLine(blockDirectory(root, holder) + "dm/uuid").starts_with("mpath-")) return true;
    }
    return isOfSubsystem(disk) && nvmeControllers(disk).size() > 1;
}

// Whether there is no medium: the kernel then states no size, or for an optical drive one that no disc has.
bool isEmpty(const BlockDevice& disk, std::string_view udev) {
    // Blocks of 512 bytes. No disc can have an odd number of them.
    constexpr std::uint64_t kDefaultSize = 0x1FFFFF;
    const Count size = disk.number("size");
    if (size == 0 && disk.flag("removable").value_or(false)) return true;
    if (!isOptical(disk)) return false;
    const bool asked = udevProperty(udev, "ID_CDROM") == "1";
    return size == kDefaultSize || (asked && udevProperty(udev, "ID_CDROM_MEDIA") != "1");
}

// The maker of a memory card or a soldered chip, which have numbers of makers of their own.
std::string_view cardMaker(const BlockDevice& disk) {
    constexpr std::pair<std::string_view, std::string_view> kChips[] = {
        {"11", "Toshiba"},  {"13", "Micron"},   {"15", "Samsung"}, {"45", "SanDisk"},
        {"70", "Kingston"}, {"90", "SK hynix"}, {"fe", "Micron"}};
    constexpr std::pair<std::string_view, std::string_view> kCards[] = {
        {"02", "Toshiba"}, {"03", "SanDisk"}, {"1b", "Samsung"}, {"74", "Transcend"}};
    const std::string number = disk.line("device/manfid");
    const std::string type = disk.line("device/type");
    if (!number.starts_with("0x0000") || number.size() != 8) return {};
    const std::string_view digits = std::string_view(number).substr(6);
    const auto in = [digits](const auto& makers) {
        for (const auto& [id, name] : makers) {
            if (id == digits) return name;
        }
        return std::string_view();
    };
    if (type == "MMC") return in(kChips);
    return type == "SD" ? in(kCards) : std::string_view();
}

void setSize(const BlockDevice& disk, bool empty, Instance& drive) {
    Count size;
    if (!empty) size = disk.bytes("size");
    const Count block = disk.blockSize();
    drive.set("Size", size);
    drive.set("BlockSize", block);
    if (size && block) drive.set("NumberOfBlocks", *size / *block);
    drive.set("PhysicalBlockSize", disk.number("queue/physical_block_size"));
}

// The whole text of which the kernel's file has the beginning or the end; the text of the file if `whole` is another one.
std::string completed(const std::string& cut, std::string_view whole) {
    whole = trimmed(whole);
    const bool same = whole.size() > cut.size() && (whole.starts_with(cut) || whole.ends_with(cut));
    return same ? std::string(whole) : cut;
}

void setNames(const GatheringContext& context, const BlockDevice& disk, const AtaIdentity* identity,
              std::string_view udev, Instance& drive) {
    std::string manufacturer = firstText(context, disk, {"device/vendor"});
    std::string model = firstText(context, disk, {"device/model", "device/name"});
    std::string firmware = firstText(context, disk, {"device/firmware_rev", "device/rev", "device/fwrev"});
    // The kernel reports "ATA" as the vendor of every ATA disk.
    const bool ata = manufacturer == "ATA";
    if (ata) manufacturer.clear();
    if (ata) model = completed(model, withoutHexEscapes(udevProperty(udev, "ID_MODEL_ENC")));
    if (ata && identity != nullptr) model = completed(model, identity->model);
    // Optical drives have longer revisions, too.
    firmware = completed(firmware, udevProperty(udev, "ID_REVISION"));
    if (identity != nullptr) firmware = completed(firmware, identity->firmware);
    drive.set("Manufacturer", manufacturer.empty() ? cardMaker(disk) : std::string_view(manufacturer));
    drive.set("Model", model);
    drive.set("SerialNumber", context.firmwareText(serialOf(disk, identity, udev)));
    drive.set("FirmwareRevision", firmware);
    drive.set("WorldWideName", worldWideName(disk, udev));
}

constexpr const char* kSources[] = {"/sys/block", "/sys/class/block"};

void gather(GatheringContext& context, GroupData& data) {
    for (const BlockDevice& disk : blockDevices(context.root())) {
        if (!isDrive(disk)) continue;
        const std::string udev = disk.udevData();
        const std::optional<AtaIdentity> known = ataIdentity(disk, udev);
        const AtaIdentity* const identity = known ? &*known : nullptr;
        const std::string_view interface = driveInterface(disk, identity, udev);
        Instance& drive = data.add(disk.path());
        drive.set("Name", disk.name());
        setNames(context, disk, identity, udev, drive);
        setSize(disk, isEmpty(disk, udev), drive);
        drive.set("MediaType", mediaOf(disk, interface, identity, udev));
        drive.set("InterfaceType", interface);
        drive.set("Removable", disk.flag("removable"));
        drive.set("ReadOnly", disk.flag("ro"));
        drive.set("BusAddress", busAddress(disk));
        drive.set("Multipath", isMultipath(context.root(), disk));
    }
}

}  // namespace

constexpr Group kStorage{.displayName = "Storage",
                         .xmlName = "Storage",
                         .fields = schema::kStorage.fields,
                         .gather = gather,
                         .sources = kSources};

}  // namespace toolkit::quorvah
