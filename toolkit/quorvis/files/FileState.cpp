#include "toolkit/quorvis/files/FileState.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>

namespace toolkit::quorvis {

namespace {

constexpr std::uint32_t kXfs = 0x58465342;
constexpr std::uint32_t kZfs = 0x2FC12FC1;
constexpr std::array<std::uint32_t, 7> kKinds = {
    EXT4_SUPER_MAGIC, kXfs, BTRFS_SUPER_MAGIC, kZfs, F2FS_SUPER_MAGIC, TMPFS_MAGIC, OVERLAYFS_SUPER_MAGIC,
};

}  // namespace

bool keepsStates(const kest::Descriptor& file) {
    struct statfs status {};
    return ::fstatfs(file.number(), &status) == 0 &&
           std::ranges::find(kKinds, static_cast<std::uint32_t>(status.f_type)) != kKinds.end();
}

}  // namespace toolkit::quorvis
