#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kPartitionFields[] = {
    {.name = "DeviceID",
     .key = true,
     .privacy = Privacy::Path,
     .meaning = "path of the device, `/dev/mapper/vg-root`, `/dev/sda1`",
     .source = "`/sys/block`; `/sys/class/block`"},
    {.name = "Name", .meaning = "name of the device in the kernel, `dm-0`", .source = "`/sys/block`"},
    {.name = "Size",
     .type = Type::Count,
     .unit = "bytes",
     .meaning = "size of the device",
     .source = "`size`"},
    {.name = "BlockSize",
     .type = Type::Count,
     .unit = "bytes",
     .meaning = "size of a logical block",
     .source = "`queue/logical_block_size`"},
    {.name = "FileSystemType",
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "`ext4`, `swap`, `LVM2_member` and so on",
     .source = "udev; superblock; `/proc/self/mountinfo`; `/proc/swaps`"},
    {.name = "Usage",
     .type = Type::Choice,
     .choices = "filesystem|swap|raid|lvm|crypto|unused",
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "what the device carries; `unused` if udev, or else the scanner, found nothing",
     .source = "udev; superblock; `/proc/self/mountinfo`; `/proc/swaps`; `holders`"},
    {.name = "Label",
     .privacy = Privacy::Name,
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "label of the file system",
     .source = "udev; superblock"},
    {.name = "Uuid",
     .privacy = Privacy::Serial,
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "identifier of the file system",
     .source = "udev; superblock"},
    {.name = "MountPoint",
     .list = true,
     .privacy = Privacy::Path,
     .meaning = "mount points",
     .source = "`/proc/self/mountinfo`"},
    {.name = "Parents",
     .list = true,
     .privacy = Privacy::Path,
     .meaning = "devices that it lies on",
     .source = "`slaves`"},
    {.name = "RaidLevel", .meaning = "`raid1` and so on", .source = "`md/level`"},
    {.name = "RaidState",
     .meaning = "`clean`, `degraded`, or what is in progress, `resync`, `recover`",
     .source = "`md/array_state`; `md/degraded`; `md/sync_action`"},
    {.name = "DmName",
     .privacy = Privacy::Name,
     .meaning = "name in the device mapper",
     .source = "`dm/name`"},
    {.name = "DmUuid",
     .privacy = Privacy::Serial,
     .meaning = "identifier in the device mapper",
     .source = "`dm/uuid`"},
};

inline constexpr Group kPartition{
    .id = 27,
    .name = "Partition",
    .element = "Partition",
    .about =
        "One instance per block device that carries a file system, swap space or a volume: partitions, "
        "logical volumes, RAID arrays, encrypted volumes, whole disks. An extended partition is not listed, "
        "because it only contains other ones. What only superblocks tell, the type of what is not in use, "
        "labels and identifiers, is known from udev or to root.",
    .fields = kPartitionFields,
    .columns = "Name Size FileSystemType MountPoint Label",
};

}  // namespace schema
