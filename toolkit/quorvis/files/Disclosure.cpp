#include "toolkit/quorvis/files/Disclosure.h"

#include <linux/capability.h>
#include <linux/magic.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvis {

namespace {

// Whether this process may read files regardless of their permissions.
bool ignoresPermissions() {
    constexpr std::uint32_t kReading =
        (std::uint32_t{1} << CAP_DAC_OVERRIDE) | (std::uint32_t{1} << CAP_DAC_READ_SEARCH);
    if (::geteuid() == 0) return true;
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    std::array<__user_cap_data_struct, 2> held{};
    return ::syscall(SYS_capget, &header, held.data()) != 0 || (held[0].effective & kReading) != 0;
}

// Magic numbers that are missing from the headers of older kernels.
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

constexpr std::array<std::uint32_t, 33> kPseudoFileSystems = {
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

std::string normalizedPath(std::string_view path) {
    std::string normalized;
    while (!path.empty()) {
        const std::string_view name = takeField(path, '/');
        if (!name.empty() && name != ".") normalized.append(1, '/').append(name);
    }
    return normalized;
}

bool liesIn(std::string_view path, std::string_view directory) {
    return path.starts_with(directory) && (path.size() == directory.size() || path[directory.size()] == '/');
}

Disclosure::Disclosure(const Settings& settings) : Disclosure(settings, ignoresPermissions()) {}

Disclosure::Disclosure(const Settings& settings, bool privileged) : privileged_(privileged) {
    std::ranges::transform(settings.secrets.allow, std::back_inserter(trees_), normalizedPath);
    seesAll_ = !privileged_ || std::ranges::find(trees_, std::string()) != trees_.end();
}

bool Disclosure::liesInTree(std::string_view path) const {
    return std::ranges::any_of(trees_, [path](const std::string& tree) { return liesIn(path, tree); });
}

// A directory above a permitted tree may be searched only for the way to it.
bool Disclosure::ofSearch(const struct stat& directory, std::string_view path) const {
    if (!privileged_ || path.empty() || (directory.st_mode & S_IXOTH) != 0 || liesInTree(path)) return true;
    return std::ranges::any_of(trees_, [path](const std::string& tree) { return liesIn(tree, path); });
}

bool Disclosure::ofNames(const struct stat& directory, std::string_view path) const {
    constexpr mode_t kBoth = S_IROTH | S_IXOTH;
    return !privileged_ || path.empty() || (directory.st_mode & kBoth) == kBoth || liesInTree(path);
}

bool Disclosure::ofContent(const struct stat& file, std::string_view path) const {
    return !privileged_ || (file.st_mode & S_IROTH) != 0 || liesInTree(path);
}

bool isOnPseudoFileSystem(int descriptor) {
    struct statfs status {};
    return ::fstatfs(descriptor, &status) == 0 &&
           std::ranges::find(kPseudoFileSystems, static_cast<std::uint32_t>(status.f_type)) !=
               kPseudoFileSystems.end();
}

}  // namespace toolkit::quorvis
