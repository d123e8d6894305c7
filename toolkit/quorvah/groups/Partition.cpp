#include <sys/stat.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "schema/groups/Partition.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/BlockDevices.h"
#include "toolkit/quorvah/sources/FileSystemIdentity.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/MountTable.h"
#include "toolkit/quorvah/sources/UdevData.h"

namespace toolkit::quorvah {

namespace {

// "/dev/mapper/vg-root" for a device of the device mapper, else "/dev/sda1".
std::string pathOf(const BlockDevice& device) {
    const std::string name = device.line("dm/name");
    return name.empty() ? device.path() : "/dev/mapper/" + name;
}

// What the machine does with its block devices.
class Uses {
  public:
    explicit Uses(const Root& root) : mounts_(readMounts(root)) {
        const std::string swaps = root.read("/proc/swaps").value_or("");
        std::string_view rest = swaps;
        std::string_view line;
        nextLine(rest, line);  // the heading
        while (nextLine(rest, line)) swaps_.insert(withoutOctalEscapes(nextWord(line)));
    }

    // The mounts of a device, without those that cannot be told from its number.
    std::vector<const Mount*> mountsOf(const BlockDevice& device) const {
        const std::string number = device.line("dev");
        std::vector<const Mount*> found;
        for (const Mount& mount : mounts_) {
            const bool byNumber = !number.empty() && mount.device == number;
            if (byNumber || mount.source == device.path() || mount.source == pathOf(device))
                found.push_back(&mount);
        }
        return found;
    }

    bool isSwap(const BlockDevice& device) const {
        return swaps_.contains(device.path()) || swaps_.contains(pathOf(device));
    }

  private:
    std::vector<Mount> mounts_;
    std::set<std::string> swaps_;
};

// What a device made of this one shows about its content.
std::string_view usageByHolder(const Root& root, const BlockDevice& device) {
    for (const std::string& holder : device.list("holders")) {
        const std::string directory = blockDirectory(root, holder);
        const std::string uuid = root.readLine(directory + "dm/uuid");
        if (uuid.starts_with("LVM-")) return "lvm";
        if (uuid.starts_with("CRYPT-")) return "crypto";
        if (root.exists(directory + "md")) return "raid";
    }
    return {};
}

// What a device contains.
struct Content {
    FileSystemIdentity identity;
    bool looked = false;  // whether somebody looked, so that a missing type means that there is nothing
};

// Drives whose medium would have to be spun up or may be missing.
bool isRemovableDrive(const BlockDevice& device) {
    return device.name().starts_with("sr") || device.name().starts_with("fd");
}

// What udev recognised, or else what the superblock says. Only the live machine has devices, and only root may read
// them.
Content contentOf(const Root& root, const BlockDevice& device, const Uses& uses) {
    const std::string udev = device.udevData();
    Content content;
    content.identity.type = udevProperty(udev, "ID_FS_TYPE");
    content.identity.usage = udevProperty(udev, "ID_FS_USAGE");
    content.identity.label = withoutHexEscapes(udevProperty(udev, "ID_FS_LABEL_ENC"));
    content.identity.uuid = udevProperty(udev, "ID_FS_UUID");
    content.looked = !udev.empty();
    if (content.looked || !root.live()) return content;
    // A mounted medium is there and in use.
    if (isRemovableDrive(device) && uses.mountsOf(device).empty()) return content;
    const kest::Descriptor file = root.open(device.path());
    struct stat status {};
    if (!file.isOpen() || ::fstat(file.number(), &status) != 0 || !S_ISBLK(status.st_mode)) return content;
    const std::string number =
        std::to_string(major(status.st_rdev)) + ":" + std::to_string(minor(status.st_rdev));
    if (number != device.line("dev")) return content;
    content.identity = readFileSystemIdentity(file).value_or(FileSystemIdentity());
    content.looked = true;
    return content;
}

std::string_view usageOf(const FileSystemIdentity& identity) {
    if (identity.type == "swap") return "swap";
    if (identity.type == "LVM2_member" || identity.type == "LVM1_member") return "lvm";
    const std::string& usage = identity.usage;
    return usage == "filesystem" || usage == "raid" || usage == "crypto" ? std::string_view(usage)
                                                                         : std::string_view();
}

void setContent(const Root& root, const BlockDevice& device, const Content& content, const Uses& uses,
                Instance& extent) {
    const std::vector<const Mount*> mounts = uses.mountsOf(device);
    std::string usage(usageOf(content.identity));
    std::string type = content.identity.type;
    if (!mounts.empty()) {
        usage = "filesystem";
        if (type.empty()) type = mounts.front()->type;
    } else if (uses.isSwap(device)) {
        usage = "swap";
        if (type.empty()) type = "swap";
    }
    if (usage.empty()) usage = usageByHolder(root, device);
    if (usage.empty() && content.looked && type.empty() && device.list("holders").empty()) usage = "unused";
    std::vector<std::string> points;
    for (const Mount* const mount : mounts) {
        if (std::ranges::find(points, mount->mountPoint) == points.end()) points.push_back(mount->mountPoint);
    }
    extent.set("FileSystemType", type);
    extent.set("Usage", usage);
    extent.set("Label", content.identity.label);
    extent.set("Uuid", content.identity.uuid);
    extent.set("MountPoint", points);
}

// What is rebuilt or checked at present, else "degraded" or "clean", else the kernel's word.
std::string raidState(const BlockDevice& device) {
    std::string action = device.line("md/sync_action");
    if (!action.empty() && action != "idle" && action != "frozen") return action;
    if (device.number("md/degraded").value_or(0) > 0) return "degraded";
    std::string state = device.line("md/array_state");
    // An array that is being written to changes between these.
    for (const char* const healthy : {"clean", "active", "active-idle", "write-pending"}) {
        if (state == healthy) return "clean";
    }
    return state;
}

void setVolume(const BlockDevice& device, Instance& extent) {
    extent.set("RaidLevel", device.line("md/level"));
    if (device.has("md")) extent.set("RaidState", raidState(device));
    extent.set("DmName", device.line("dm/name"));
    extent.set("DmUuid", device.line("dm/uuid"));
}

std::vector<std::string> slavesOf(const Root& root, const BlockDevice& device) {
    std::vector<std::string> parents;
    for (const std::string& name : device.list("slaves"))
        parents.push_back(pathOf(BlockDevice(root, blockDirectory(root, name), name)));
    return parents;
}

// An extended partition holds other partitions and no data. Without udev, it is told by the size that the kernel gives
// it, two blocks of 512 bytes or one of the disk, if the disk has logical partitions.
bool isExtended(const BlockDevice& partition, const BlockDevice& disk,
                const std::vector<BlockDevice>& partitions) {
    constexpr std::uint64_t kStub = 1024;
    constexpr std::uint64_t kFirstLogical = 5;
    const std::string udev = partition.udevData();
    const std::string_view scheme = udevProperty(udev, "ID_PART_ENTRY_SCHEME");
    if (scheme.empty() && partition.bytes("size") == std::max(kStub, disk.blockSize().value_or(kStub))) {
        return partition.number("partition").value_or(kFirstLogical) < kFirstLogical &&
               std::ranges::any_of(partitions, [](const BlockDevice& other) {
                   return other.number("partition").value_or(0) >= kFirstLogical;
               });
    }
    if (scheme != "dos") return false;
    const std::string_view type = udevProperty(udev, "ID_PART_ENTRY_TYPE");
    return type == "0x5" || type == "0xf" || type == "0x85";
}

// Whether a whole device carries something itself. One without a size has no medium.
bool isExtent(const BlockDevice& device, const Content& content, const Uses& uses) {
    const bool volume = device.has("dm") || device.has("md");
    return volume || !device.list("holders").empty() || uses.isSwap(device) ||
           !uses.mountsOf(device).empty() || !usageOf(content.identity).empty();
}

bool mayCarry(const BlockDevice& device) {
    return device.number("size").value_or(0) > 0 && !device.name().starts_with("ram");
}

constexpr const char* kSources[] = {"/sys/block", "/sys/class/block"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    const Uses uses(root);
    const auto add = [&](const BlockDevice& device, const Content& content, Count blockSize,
                         const std::vector<std::string>& parents) {
        context.checkTime();
        Instance& extent = data.add(pathOf(device));
        extent.set("Name", device.name());
        extent.set("Size", device.bytes("size"));
        extent.set("BlockSize", blockSize);
        setContent(root, device, content, uses, extent);
        extent.set("Parents", parents);
        setVolume(device, extent);
    };
    for (const BlockDevice& disk : blockDevices(root)) {
        const std::vector<BlockDevice> partitions = partitionsOf(root, disk);
        if (partitions.empty() && mayCarry(disk)) {
            const Content content = contentOf(root, disk, uses);
            if (isExtent(disk, content, uses)) add(disk, content, disk.blockSize(), slavesOf(root, disk));
        }
        for (const BlockDevice& partition : partitions) {
            if (!isExtended(partition, disk, partitions))
                add(partition, contentOf(root, partition, uses), disk.blockSize(), {pathOf(disk)});
        }
    }
}

}  // namespace

constexpr Group kPartition{.displayName = "Partition",
                           .xmlName = "Partition",
                           .fields = schema::kPartition.fields,
                           .gather = gather,
                           .sources = kSources};

}  // namespace toolkit::quorvah
