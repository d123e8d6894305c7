#include "toolkit/quorvis/files/KernelFiles.h"

#include <linux/magic.h>
#include <sys/vfs.h>

#include <algorithm>
#include <array>
#include <cstdint>

namespace toolkit::quorvis {

namespace {

// Those that the headers of older kernels lack.
constexpr std::uint32_t kConfigFs = 0x62656570;
constexpr std::uint32_t kMessageQueues = 0x19800202;
constexpr std::uint32_t kResourceControl = 0x07655821;
constexpr std::uint32_t kFuseControl = 0x65735543;
constexpr std::uint32_t kRpcPipes = 0x67596969;
constexpr std::uint32_t kNfsServer = 0x6E667364;
constexpr std::uint32_t kAppArmor = 0x5A3C69F0;
constexpr std::uint32_t kXen = 0xABBA1974;
constexpr std::uint32_t kPidFiles = 0x50494446;
constexpr std::uint32_t kSecretMemory = 0x5345434D;
constexpr std::uint32_t kDeviceMemory = 0x454D444D;
constexpr std::uint32_t kDmaBuffers = 0x444D4142;

constexpr std::array<std::uint32_t, 33> kKinds = {
    PROC_SUPER_MAGIC,
    SYSFS_MAGIC,
    DEBUGFS_MAGIC,
    TRACEFS_MAGIC,
    SECURITYFS_MAGIC,
    CGROUP_SUPER_MAGIC,
    CGROUP2_SUPER_MAGIC,
    BPF_FS_MAGIC,
    SELINUX_MAGIC,
    SMACK_MAGIC,
    PSTOREFS_MAGIC,
    EFIVARFS_MAGIC,
    DEVPTS_SUPER_MAGIC,
    BINFMTFS_MAGIC,
    NSFS_MAGIC,
    SOCKFS_MAGIC,
    PIPEFS_MAGIC,
    ANON_INODE_FS_MAGIC,
    USBDEVICE_SUPER_MAGIC,
    MTD_INODE_FS_MAGIC,
    OPENPROM_SUPER_MAGIC,
    kConfigFs,
    kMessageQueues,
    kResourceControl,
    kFuseControl,
    kRpcPipes,
    kNfsServer,
    kAppArmor,
    kXen,
    kPidFiles,
    kSecretMemory,
    kDeviceMemory,
    kDmaBuffers,
};

}  // namespace

bool isMadeByKernel(int descriptor) {
    struct statfs status {};
    return ::fstatfs(descriptor, &status) == 0 &&
           std::ranges::find(kKinds, static_cast<std::uint32_t>(status.f_type)) != kKinds.end();
}

}  // namespace toolkit::quorvis
