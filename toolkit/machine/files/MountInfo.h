#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace toolkit {

// One mount. The octal escapes of the files are resolved.
struct Mount {
    std::string device;  // "254:0", only in mountinfo
    std::string root;    // the part of the file system that is mounted, only in mountinfo
    std::string mountPoint;
    std::string type;
    std::string source;
    std::string options;  // of the mount, then those of the file system that the mount does not name itself
};

// The mounts in the order of the file, without the lines that are no mounts.
std::vector<Mount> readMountInfo(std::string_view text);

// /proc/mounts, /etc/mtab and /etc/fstab are written alike. Of fstab's entries those count that a start of
// the system mounts: no swap, no "noauto".
std::vector<Mount> readMountTable(std::string_view text);

// Replaces \040 and the like by the character meant.
std::string withoutOctalEscapes(std::string_view text);

// Whether one of the comma-separated options is this one.
bool hasMountOption(std::string_view options, std::string_view wanted);

}  // namespace toolkit
