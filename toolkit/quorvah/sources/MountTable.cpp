#include "toolkit/quorvah/sources/MountTable.h"

namespace toolkit::quorvah {

std::vector<Mount> readMounts(const Root& root) {
    for (const char* const path : {"/proc/self/mountinfo", "/proc/1/mountinfo"}) {
        if (const auto text = root.read(path)) return readMountInfo(*text);
    }
    for (const char* const path : {"/proc/mounts", "/proc/1/mounts", "/etc/fstab"}) {
        if (const auto text = root.read(path)) return readMountTable(*text);
    }
    return {};
}

}  // namespace toolkit::quorvah
