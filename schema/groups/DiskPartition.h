#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kDiskPartitionFields[] = {
    {.name = "DeviceID", .key = true, .meaning = "path of the device, `/dev/sda1`", .source = "`/sys/block`"},
    {.name = "Name",
     .privacy = Privacy::Name,
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "label of the partition in a GPT",
     .source = "udev; partition table; `uevent`"},
    {.name = "StartingOffset",
     .type = Type::Count,
     .unit = "bytes",
     .meaning = "distance from the start of the disk",
     .source = "`start`"},
    {.name = "Size",
     .type = Type::Count,
     .unit = "bytes",
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "size; of an extended partition as in the table, because the kernel has no size of it",
     .source = "`size`; partition table"},
    {.name = "BlockSize",
     .type = Type::Count,
     .unit = "bytes",
     .meaning = "size of a logical block",
     .source = "`queue/logical_block_size`"},
    {.name = "PartitionType",
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "GUID in a GPT, two hexadecimal digits in an MBR",
     .source = "udev; partition table"},
    {.name = "PrimaryPartition",
     .type = Type::Boolean,
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "whether the partition is primary; always true in a GPT",
     .source = "udev; partition table"},
    {.name = "Bootable",
     .type = Type::Boolean,
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "whether the partition is marked as bootable",
     .source = "udev; partition table"},
    {.name = "DiskName", .meaning = "disk of the partition, `/dev/sda`", .source = "`/sys/block`"},
    {.name = "PartitionNumber",
     .type = Type::Count,
     .meaning = "number of the partition",
     .source = "`partition`"},
    {.name = "PartitionUuid",
     .privacy = Privacy::Serial,
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "identifier of the partition",
     .source = "udev; partition table; `uevent`"},
    {.name = "TableType",
     .access = Access::RootSeesMore,
     .liveSeesMore = true,
     .meaning = "kind of partition table, `gpt`, `dos` and so on",
     .source = "udev; partition table"},
};

inline constexpr Group kDiskPartition{
    .id = 8,
    .name = "Disk Partition",
    .element = "DiskPartition",
    .about =
        "One instance per partition. What only the table on the disk tells, the name, the type and what "
        "follows from it, and the identifier, is known from udev or to root.",
    .fields = kDiskPartitionFields,
    .columns = "DeviceID Size PartitionType TableType Bootable",
};

}  // namespace schema
