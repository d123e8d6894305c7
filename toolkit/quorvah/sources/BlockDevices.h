#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// A whole block device or a partition of one, as sysfs shows it.
class BlockDevice {
  public:
    // `directory` is that of the device in sysfs.
    BlockDevice(const Root& root, std::string directory, std::string name)
        : root_(root), directory_(std::move(directory)), name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    // "/dev/sda"; where the kernel's name has a "!" the path has a "/".
    std::string path() const;

    std::string line(std::string_view file) const { return root_.readLine(directory_ + std::string(file)); }
    Count number(std::string_view file) const { return root_.readCount(directory_ + std::string(file)); }
    std::string link(std::string_view file) const { return root_.readLink(directory_ + std::string(file)); }
    std::vector<std::string> list(std::string_view file) const {
        return root_.list(directory_ + std::string(file));
    }
    bool has(std::string_view file) const { return root_.exists(directory_ + std::string(file)); }
    std::optional<std::string> content(std::string_view file) const {
        return root_.read(directory_ + std::string(file));
    }

    // A flag such as "removable".
    std::optional<bool> flag(std::string_view file) const;
    // Bytes. The kernel counts in blocks of 512 bytes whatever the device's own blocks are.
    Count bytes(std::string_view file) const;
    // Bytes of a logical block.
    Count blockSize() const;
    // Where the device hangs: the path that its directory in /sys/block is a link to. Empty for a captured
    // tree that has no links.
    const std::string& place() const { return place_; }
    void setPlace(std::string place) { place_ = std::move(place); }

    // What udev knows of the device, as udevProperty() reads it; empty without udev.
    std::string udevData() const;

    const std::string& directory() const { return directory_; }

  private:
    const Root& root_;
    std::string directory_;
    std::string name_;
    std::string place_;
};

// All whole devices of the tree, without nodes that the kernel hides.
std::vector<BlockDevice> blockDevices(const Root& root);

// The partitions of a whole device.
std::vector<BlockDevice> partitionsOf(const Root& root, const BlockDevice& disk);

// Whether a device is a drive of its own: no loop, RAM, device mapper or RAID device, no floppy drive, and no
// area of a memory card.
bool isDrive(const BlockDevice& device);

}  // namespace toolkit::quorvah
