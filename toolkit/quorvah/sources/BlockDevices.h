#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

// A block device in sysfs: a whole disk or a partition.
class BlockDevice {
  public:
    // `directory` is the directory of the device in sysfs.
    BlockDevice(const Root& root, std::string directory, std::string name)
        : root_(root), directory_(std::move(directory)), name_(std::move(name)) {}

    const std::string& name() const { return name_; }
    // "/dev/sda". A "!" in the kernel's name becomes a "/".
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

    // The value of a flag file such as "removable".
    std::optional<bool> flag(std::string_view file) const;
    // A size file in bytes. The kernel always counts blocks of 512 bytes.
    Count bytes(std::string_view file) const;
    // The logical block size in bytes.
    Count blockSize() const;
    // The target of the device's link in /sys, which shows its bus. Empty in a captured tree without links.
    const std::string& place() const { return place_; }
    void setPlace(std::string place) { place_ = std::move(place); }

    // The udev database entry of the device, for udevProperty(). Empty without udev.
    std::string udevData() const;

    const std::string& directory() const { return directory_; }
    const Root& root() const { return root_; }

  private:
    const Root& root_;
    std::string directory_;
    std::string name_;
    std::string place_;
};

// All whole devices, except those that the kernel hides.
std::vector<BlockDevice> blockDevices(const Root& root);

// The directory of a device in sysfs, of which a captured tree may have only one.
std::string blockDirectory(const Root& root, const std::string& name);

// The partitions of a whole device.
std::vector<BlockDevice> partitionsOf(const Root& root, const BlockDevice& disk);

// Whether a device is a drive: not a loop, RAM, device mapper, RAID or floppy device, not made of other devices, and not a
// special area of a memory card.
bool isDrive(const BlockDevice& device);

}  // namespace toolkit::quorvah
