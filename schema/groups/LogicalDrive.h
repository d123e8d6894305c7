#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kLogicalDriveFields[] = {
    {.name = "Root",
     .key = true,
     .privacy = Privacy::Path,
     .meaning = "mount point",
     .source = "`/proc/self/mountinfo`"},
    {.name = "Name",
     .privacy = Privacy::Path,
     .meaning = "mounted device or remote path",
     .source = "`/proc/self/mountinfo`"},
    {.name = "FileSystemType", .meaning = "`ext4`, `nfs4` and so on", .source = "`/proc/self/mountinfo`"},
    {.name = "FileSystemSize",
     .type = Type::Count,
     .unit = "bytes",
     .meaning = "size of the file system",
     .source = "statvfs; in a tree size of the device"},
    {.name = "AvailableSpace",
     .type = Type::Count,
     .unit = "bytes",
     .isVolatile = true,
     .liveOnly = true,
     .meaning = "space available to unprivileged users",
     .source = "statvfs"},
    {.name = "BlockSize",
     .type = Type::Count,
     .unit = "bytes",
     .liveOnly = true,
     .meaning = "size of a block",
     .source = "statvfs"},
    {.name = "ReadOnly",
     .type = Type::Boolean,
     .meaning = "whether the mount is read-only",
     .source = "`/proc/self/mountinfo`"},
    {.name = "MaxFileNameLength",
     .type = Type::Count,
     .unit = "bytes",
     .liveOnly = true,
     .meaning = "longest file name",
     .source = "statvfs"},
    {.name = "MountOptions",
     .privacy = Privacy::Content,
     .meaning = "mount options, without the values of passwords",
     .source = "`/proc/self/mountinfo`"},
    {.name = "Label",
     .privacy = Privacy::Name,
     .access = Access::RootSeesMore,
     .meaning = "label of the file system",
     .source = "udev; superblock"},
    {.name = "Uuid",
     .privacy = Privacy::Serial,
     .access = Access::RootSeesMore,
     .meaning = "identifier of the file system",
     .source = "udev; superblock"},
    {.name = "InodesTotal",
     .type = Type::Count,
     .liveOnly = true,
     .meaning = "number of inodes",
     .source = "statvfs"},
    {.name = "InodesFree",
     .type = Type::Count,
     .isVolatile = true,
     .liveOnly = true,
     .meaning = "number of free inodes",
     .source = "statvfs"},
    {.name = "Remote",
     .type = Type::Boolean,
     .meaning = "whether another machine holds the files; such file systems have no sizes",
     .source = "type of the file system"},
};

inline constexpr Group kLogicalDrive{
    .id = 11,
    .name = "Logical Drive",
    .element = "LogicalDrive",
    .about =
        "One instance per mounted file system, except for pseudo file systems such as proc. If a file system "
        "is "
        "mounted several times, as by bind mounts or with several subvolumes, Root is where its own root is "
        "mounted, or else the first place; the group Partition has all places.",
    .fields = kLogicalDriveFields,
};

}  // namespace schema
