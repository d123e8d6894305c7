#include "toolkit/quorvah/sources/BlockDevices.h"

#include <algorithm>

namespace toolkit::quorvah {

namespace {

const std::string kBlock = "/sys/block/";
const std::string kClass = "/sys/class/block/";  // has partitions, too
constexpr std::uint64_t kSector = 512;

bool contains(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

// Whether the name is that of one path to an NVMe disk that has several, such as "nvme0c1n1". The kernel shows it to itself only.
bool isNvmePath(const std::string& name) {
    return name.starts_with("nvme") && contains(name, "c");
}

// Whether an entry of the class is a partition. A captured tree may lack the file that tells.
bool isPartition(const Root& root, const std::string& name) {
    if (root.exists(kClass + name + "/partition")) return true;
    const bool lettered =
        name.starts_with("sd") || name.starts_with("hd") || name.starts_with("vd") || name.starts_with("xvd");
    return lettered && name.back() >= '0' && name.back() <= '9';
}

// In old kernels the device is no link itself, but has one.
std::string placeOf(const Root& root, const std::string& directory) {
    std::string place = root.readLink(directory);
    if (!place.empty()) return place;
    place = root.readLink(directory + "/device");
    return contains(place, "devices/") ? place : std::string();
}

}  // namespace

std::string BlockDevice::path() const {
    std::string path = "/dev/" + name_;
    std::ranges::replace(path, '!', '/');
    return path;
}

std::optional<bool> BlockDevice::flag(std::string_view file) const {
    const Count value = number(file);
    return value ? std::optional(*value != 0) : std::nullopt;
}

Count BlockDevice::bytes(std::string_view file) const {
    return product(number(file), kSector);
}

Count BlockDevice::blockSize() const {
    const Count size = number("queue/logical_block_size");
    return size.value_or(0) > 0 ? size : std::nullopt;
}

std::string BlockDevice::udevData() const {
    const std::string device = line("dev");
    return device.empty() ? std::string() : root_.read("/run/udev/data/b" + device).value_or("");
}

std::vector<BlockDevice> blockDevices(const Root& root) {
    std::string directory = kBlock;
    std::vector<std::string> names = root.list(kBlock);
    if (names.empty()) {
        directory = kClass;
        names = root.list(kClass);
        std::erase_if(names, [&root](const std::string& name) { return isPartition(root, name); });
    }
    std::vector<BlockDevice> devices;
    for (const std::string& name : names) {
        if (isNvmePath(name)) continue;
        BlockDevice device(root, directory + name + "/", name);
        if (device.flag("hidden").value_or(false)) continue;
        device.setPlace(placeOf(root, directory + name));
        devices.push_back(std::move(device));
    }
    return devices;
}

std::string blockDirectory(const Root& root, const std::string& name) {
    return (root.exists(kClass + name) ? kClass : kBlock) + name + "/";
}

std::vector<BlockDevice> partitionsOf(const Root& root, const BlockDevice& disk) {
    std::vector<BlockDevice> partitions;
    for (const std::string& name : disk.list("")) {
        // The name of a partition starts with the name of its disk.
        if (!name.starts_with(disk.name())) continue;
        BlockDevice partition(root, disk.directory() + name + "/", name);
        if (partition.has("partition")) partitions.push_back(std::move(partition));
    }
    return partitions;
}

bool isDrive(const BlockDevice& device) {
    const std::string& name = device.name();
    for (const char* const prefix :
         {"loop", "ram", "zram", "dm-", "md", "nbd", "fd", "drbd", "bcache", "zd"}) {
        if (name.starts_with(prefix)) return false;
    }
    const bool cardArea = name.starts_with("mmcblk") &&
                          (contains(name, "boot") || contains(name, "rpmb") || contains(name, "gp"));
    // The device that combines the paths to an NVMe disk is virtual, too, and so is the controller of one in a network.
    const bool madeUp = contains(device.place(), "/virtual/") && !contains(device.place(), "/virtual/nvme-");
    return !cardArea && !madeUp;
}

}  // namespace toolkit::quorvah
