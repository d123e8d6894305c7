#include "toolkit/quorvah/sources/DriveInterface.h"

#include <string>
#include <utility>

#include "toolkit/quorvah/sources/BusAddress.h"
#include "toolkit/quorvah/sources/UdevData.h"

namespace toolkit::quorvah {

namespace {

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// The number behind "/ata" in the path of a disk: 3 for ".../ata3/host2/...".
std::string_view ataPort(std::string_view place) {
    constexpr std::string_view kMark = "/ata";
    const std::size_t at = place.find(kMark);
    if (at == std::string_view::npos) return {};
    const std::string_view rest = place.substr(at + kMark.size());
    return rest.substr(0, rest.find('/'));
}

// The class of the PCI device in the path of a disk, "0x010601".
std::string controllerClass(const BlockDevice& disk) {
    const std::string& place = disk.place();
    const std::string_view address = pciAddressIn(place);
    if (address.empty()) return {};
    std::string found = disk.root().readLine("/sys/bus/pci/devices/" + std::string(address) + "/class");
    const std::size_t devices = place.find("devices/");
    if (!found.empty() || devices == std::string::npos) return found;
    const std::size_t end = place.find(address) + address.size();
    return disk.root().readLine("/sys/" + place.substr(devices, end - devices) + "/class");
}

// An IDE controller may have ports for both kinds of disks. Every other controller that the kernel drives as ATA is one
// for SATA.
std::string_view kindOfAta(const BlockDevice& disk, const AtaIdentity* identity, std::string_view udev) {
    constexpr std::string_view kIde = "0x0101";
    if (identity != nullptr && identity->serialAta) return "SATA";
    if (udevProperty(udev, "ID_ATA_SATA") == "1") return "SATA";
    const std::string link = "/sys/class/ata_link/link" + std::string(ataPort(disk.place()));
    const std::string speed = disk.root().readLine(link + "/sata_spd");
    if (speed.ends_with("Gbps")) return "SATA";
    const bool parallel = controllerClass(disk).starts_with(kIde) || contains(disk.place(), "pata");
    return parallel ? "PATA" : "SATA";
}

}  // namespace

std::string_view driveInterface(const BlockDevice& disk, const AtaIdentity* identity, std::string_view udev) {
    const std::string& place = disk.place();
    const std::pair<std::string_view, std::string_view> marks[] = {
        {"/nvme", "NVMe"}, {"/mmc_host/", "MMC"}, {"/usb", "USB"},         {"/ata", "ATA"},
        {"/ide", "PATA"},  {"/session", "iSCSI"}, {"/end_device-", "SAS"}, {"/virtio", "virtio"},
    };
    for (const auto& [mark, name] : marks) {
        if (!contains(place, mark)) continue;
        if (name == "ATA") return kindOfAta(disk, identity, udev);
        // A controller for SAS may have SATA disks.
        return name == "SAS" && disk.line("device/vendor") == "ATA" ? "SATA" : name;
    }
    if (disk.name().starts_with("nvme")) return "NVMe";
    if (disk.name().starts_with("mmcblk")) return "MMC";
    if (disk.name().starts_with("vd")) return "virtio";
    if (disk.name().starts_with("hd")) return "PATA";
    const std::string_view bus = udevProperty(udev, "ID_BUS");
    if (bus == "ata") return kindOfAta(disk, identity, udev);
    return bus == "usb" ? "USB" : "";
}

}  // namespace toolkit::quorvah
