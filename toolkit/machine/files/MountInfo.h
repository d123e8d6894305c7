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
    std::string options;  // those of the mount, then the other ones of the file system
};

// The mounts in the order of the file. Malformed lines are skipped.
std::vector<Mount> readMountInfo(std::string_view text);

// Parses /proc/mounts, /etc/mtab and /etc/fstab, which have one format. Entries of fstab that are not mounted at boot, swap
// and "noauto", are skipped.
std::vector<Mount> readMountTable(std::string_view text);

// Replaces octal escapes, such as \040 for a blank.
std::string withoutOctalEscapes(std::string_view text);

// Whether the comma-separated options include this one.
bool hasMountOption(std::string_view options, std::string_view wanted);

}  // namespace toolkit
