#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/MountInfo.h"

namespace toolkit::quorvah {

enum class FileSystemKind {
    Pseudo,  // holds no files of its own: proc, sysfs, tmpfs, autofs ...
    Local,   // the kernel answers for it at once
    Fuse,    // a program answers for it, or does not
    Remote,  // another machine does
};

// tmpfs and ramfs count as pseudo but where they are the root, as on a system that runs from memory.
FileSystemKind fileSystemKind(const Mount& mount);

// Of several mounts at one place only the last is seen; of several of one device (bind mounts, subvolumes)
// the one that shows all of it, else the first. Pseudo file systems are left out.
std::vector<Mount> mountedDrives(const std::vector<Mount>& mounts);

// The options with the values of passwords cut out of them.
std::string withoutPasswords(std::string_view options);

}  // namespace toolkit::quorvah
