#pragma once

#include <string_view>

#include "toolkit/quorvah/sources/AtaIdentity.h"
#include "toolkit/quorvah/sources/BlockDevices.h"

namespace toolkit::quorvah {

// "SATA", "PATA", "SAS", "NVMe", "USB", "virtio", "MMC" or "iSCSI", derived from the innermost known component of the
// disk's path in sysfs. Empty if nothing shows it, as for the disks of most RAID controllers. `identity` is that of an ATA
// disk, or null, and `udev` the entry of the disk in udev's database.
std::string_view driveInterface(const BlockDevice& disk, const AtaIdentity* identity, std::string_view udev);

}  // namespace toolkit::quorvah
