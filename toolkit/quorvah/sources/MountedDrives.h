#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/MountInfo.h"

namespace toolkit::quorvah {

enum class FileSystemKind {
    Pseudo,  // has no stored files: proc, sysfs, tmpfs, autofs and so on
    Local,   // the kernel knows its size
    Fuse,    // a program provides it and may not answer
    Remote,  // another machine provides it
};

// tmpfs and ramfs are pseudo file systems, except for the root of a system that runs from memory.
FileSystemKind fileSystemKind(const Mount& mount);

// The mounts that count as drives. Of several mounts at a mount point, it is the last one. Of several mounts of a
// device (bind mounts, subvolumes), it is the one that shows the whole file system, or else the first. Pseudo file
// systems are omitted.
std::vector<Mount> mountedDrives(const std::vector<Mount>& mounts);

// The mount options without the values of passwords.
std::string withoutPasswords(std::string_view options);

}  // namespace toolkit::quorvah
