#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <optional>
#include <string>
#include <vector>

#include "schema/groups/LogicalDrive.h"
#include "toolkit/machine/files/MountInfo.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/FileSystemIdentity.h"
#include "toolkit/quorvah/sources/FileSystemUsage.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/MountTable.h"
#include "toolkit/quorvah/sources/MountedDrives.h"
#include "toolkit/quorvah/sources/UdevData.h"

namespace toolkit::quorvah {
namespace {

// "sda1" for "/dev/sda1"; empty if the source is not a device.
std::string deviceName(const Mount& mount) {
    return mount.source.starts_with("/dev/") ? mount.source.substr(mount.source.rfind('/') + 1)
                                             : std::string();
}

// The size of the underlying device.
Count deviceSize(const Root& root, const Mount& mount) {
    Count sectors;
    if (!mount.device.empty()) sectors = root.readCount("/sys/dev/block/" + mount.device + "/size");
    const std::string name = deviceName(mount);
    if (!sectors && !name.empty()) sectors = root.readCount("/sys/class/block/" + name + "/size");
    constexpr std::uint64_t kSector = 512;
    return sectors.value_or(0) > 0 ? product(sectors, kSector) : std::nullopt;
}

// "254:0"; empty if it is unknown.
std::string deviceNumber(const Root& root, const Mount& mount) {
    if (!mount.device.empty()) return mount.device;
    const std::string name = deviceName(mount);
    return name.empty() ? std::string() : root.readLine("/sys/class/block/" + name + "/dev");
}

// Whether an open file is the device with this number, "8:1".
bool isDevice(const kest::Descriptor& file, const std::string& number) {
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !S_ISBLK(status.st_mode)) return false;
    return number == std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev));
}

// Reads the superblock. Only the live machine has devices, and only root may read them.
void setFromDevice(const Root& root, const std::string& number, Instance& drive) {
    const std::string uevent = root.read("/sys/dev/block/" + number + "/uevent").value_or("");
    std::string_view rest = uevent;
    std::string name;
    for (std::string_view line; nextLine(rest, line);) {
        if (takeField(line, '=') == "DEVNAME") name = line;
    }
    if (name.empty()) return;
    const kest::Descriptor device = root.open("/dev/" + name);
    if (!isDevice(device, number)) return;
    const std::optional<FileSystemIdentity> identity = readFileSystemIdentity(device);
    if (!identity) return;
    drive.set("Label", identity->label);
    drive.set("Uuid", identity->uuid);
}

void setLabels(const Root& root, const Mount& mount, Instance& drive) {
    // An entry of fstab may identify the file system by its label or UUID only.
    if (mount.source.starts_with("LABEL=")) drive.set("Label", mount.source.substr(6));
    if (mount.source.starts_with("UUID=")) drive.set("Uuid", mount.source.substr(5));
    // The device numbers of btrfs volumes are those of no device.
    const bool named = mount.type == "btrfs" && !deviceName(mount).empty();
    const std::string number =
        named ? root.readLine("/sys/class/block/" + deviceName(mount) + "/dev") : deviceNumber(root, mount);
    if (number.empty()) return;
    const std::string data = root.read("/run/udev/data/b" + number).value_or("");
    const std::string_view label = udevProperty(data, "ID_FS_LABEL_ENC");
    const std::string_view uuid = udevProperty(data, "ID_FS_UUID");
    if (!label.empty()) drive.set("Label", withoutHexEscapes(label));
    if (!uuid.empty()) drive.set("Uuid", uuid);
    if (udevProperty(data, "ID_FS_TYPE").empty() && root.live()) setFromDevice(root, number, drive);
}

// Whether `usage` describes this file system. It does not if another one is mounted on a parent directory. The device
// numbers of btrfs volumes are not those of their mounts.
bool isAbout(const FileSystemUsage& usage, const Mount& mount) {
    const std::string number = std::to_string(usage.deviceMajor) + ":" + std::to_string(usage.deviceMinor);
    return mount.device.empty() || mount.type == "btrfs" || number == mount.device;
}

void setUsage(const FileSystemUsage& usage, Instance& drive) {
    drive.set("FileSystemSize", usage.size);
    drive.set("AvailableSpace", usage.available);
    drive.set("BlockSize", usage.blockSize);
    drive.set("MaxFileNameLength", usage.maxNameLength);
    if (usage.inodes == 0) return;  // the file system does not count them
    drive.set("InodesTotal", usage.inodes);
    drive.set("InodesFree", usage.inodesFree);
}

void addDrive(const Root& root, const Mount& mount, GroupData& data) {
    Instance& drive = data.add(mount.mountPoint);
    drive.set("Name", mount.source);
    drive.set("FileSystemType", mount.type);
    const FileSystemKind kind = fileSystemKind(mount);
    if (kind != FileSystemKind::Remote) drive.set("FileSystemSize", deviceSize(root, mount));
    drive.set("ReadOnly", hasMountOption(mount.options, "ro"));
    drive.set("MountOptions", withoutPasswords(mount.options));
    setLabels(root, mount, drive);
    // Only the program behind a FUSE mount knows whether its files are remote.
    const bool known = kind != FileSystemKind::Fuse || mount.type == "fuseblk";
    if (known) drive.set("Remote", kind == FileSystemKind::Remote);
}

// Asks the kernel for the sizes of local file systems, which it knows without asking a program or another machine.
void addUsages(const Root& root, const std::vector<Mount>& drives, GroupData& data) {
    std::vector<std::size_t> asked;
    std::vector<std::string> paths;
    for (std::size_t i = 0; i < drives.size(); ++i) {
        const std::string& place = drives[i].mountPoint;
        if (fileSystemKind(drives[i]) != FileSystemKind::Local || root.avoided().contain(place)) continue;
        asked.push_back(i);
        paths.push_back(place);
    }
    const UsageAnswers answers = askUsage(paths);
    if (!answers.complete) data.partial("timeout");
    for (std::size_t i = 0; i < asked.size(); ++i) {
        const std::optional<FileSystemUsage>& usage = answers.usages[i];
        if (usage && isAbout(*usage, drives[asked[i]])) setUsage(*usage, data.instances()[asked[i]]);
    }
}

constexpr const char* kSources[] = {"/proc/self/mountinfo", "/proc/1/mountinfo", "/proc/mounts",
                                    "/proc/1/mounts", "/etc/fstab"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const std::vector<Mount> drives = mountedDrives(readMounts(root));
    for (const Mount& drive : drives) addDrive(root, drive, data);
    if (root.live()) addUsages(root, drives, data);
}

}  // namespace

constexpr Group kLogicalDrive{.displayName = "Logical Drive",
                              .xmlName = "LogicalDrive",
                              .fields = schema::kLogicalDrive.fields,
                              .gather = gather,
                              .sources = kSources};

}  // namespace toolkit::quorvah
