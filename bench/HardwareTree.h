#pragma once

#include <filesystem>

namespace zavbench {

// Creates the files of /proc, /sys and /run/udev of a machine with this number of processors, two threads per core and 64
// cores per package, and of SCSI disks with one partition each.
void makeHardwareTree(const std::filesystem::path& root, int processors, int disks);

}  // namespace zavbench
