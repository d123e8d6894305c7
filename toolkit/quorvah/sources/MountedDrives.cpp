#include "toolkit/quorvah/sources/MountedDrives.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {
namespace {

constexpr std::string_view kPseudo[] = {
    "anon_inodefs", "apparmorfs", "autofs",     "bdev",       "binder",  "binfmt_misc", "bpf",      "cgroup",
    "cgroup2",      "configfs",   "cpuset",     "debugfs",    "devfs",   "devpts",      "devtmpfs", "dlmfs",
    "dmabuf",       "drm",        "efivarfs",   "functionfs", "fusectl", "hugetlbfs",   "ipathfs",  "mqueue",
    "nfsd",         "none",       "nsfs",       "pipefs",     "proc",    "pstore",      "ramfs",    "resctrl",
    "rootfs",       "rpc_pipefs", "securityfs", "selinuxfs",  "smackfs", "sockfs",      "spufs",    "sysfs",
    "tmpfs",        "tracefs",    "usbfs",
};

// FUSE file systems that show files from elsewhere.
constexpr std::string_view kPseudoFuse[] = {
    "fuse.gvfsd-fuse", "fuse.lxcfs", "fuse.portal", "fuse.rofiles-fuse", "fuse.vmware-vmblock",
};

constexpr std::string_view kRemote[] = {
    "9p",
    "acfs",
    "afs",
    "beegfs",
    "ceph",
    "cifs",
    "coda",
    "fuse.ceph",
    "fuse.curlftpfs",
    "fuse.glusterfs",
    "fuse.rclone",
    "fuse.s3fs",
    "fuse.sshfs",
    "fuse.davfs",
    "glusterfs",
    "gpfs",
    "lustre",
    "ncpfs",
    "nfs",
    "nfs4",
    "orangefs",
    "pvfs2",
    "smb3",
    "smbfs",
    "vboxsf",
    "virtiofs",
};

template <std::size_t count>
bool isOneOf(std::string_view type, const std::string_view (&names)[count]) {
    return std::find(std::begin(names), std::end(names), type) != std::end(names);
}

// Mounts with the same identity are one drive. mountinfo has the device number, the other files only the device name.
const std::string& identity(const Mount& mount) {
    if (!mount.device.empty()) return mount.device;
    const bool namesDevice = mount.source.starts_with("/dev/") || mount.source.find('=') != std::string::npos;
    return namesDevice ? mount.source : mount.mountPoint;
}

// Whether the value of an option is a secret: "password=", "pass=", "secret=" and so on.
bool isPassword(std::string_view key) {
    return key.find("pass") != std::string_view::npos || key == "secret" || key == "key" || key == "pwd";
}

}  // namespace

FileSystemKind fileSystemKind(const Mount& mount) {
    const std::string_view type = mount.type;
    const bool inMemory = type == "tmpfs" || type == "ramfs";
    if (inMemory && mount.mountPoint == "/") return FileSystemKind::Local;
    if (isOneOf(type, kPseudo) || isOneOf(type, kPseudoFuse)) return FileSystemKind::Pseudo;
    if (isOneOf(type, kRemote)) return FileSystemKind::Remote;
    const bool fuse = type == "fuse" || type == "fuseblk" || type.starts_with("fuse.");
    return fuse ? FileSystemKind::Fuse : FileSystemKind::Local;
}

std::vector<Mount> mountedDrives(const std::vector<Mount>& mounts) {
    std::unordered_map<std::string_view, const Mount*> latest;  // per mount point; it hides earlier ones
    for (const Mount& mount : mounts) latest[mount.mountPoint] = &mount;
    std::vector<Mount> drives;
    std::unordered_map<std::string, std::size_t> known;  // index in `drives`, by identity
    for (const Mount& mount : mounts) {
        if (fileSystemKind(mount) == FileSystemKind::Pseudo || latest[mount.mountPoint] != &mount) continue;
        const auto [same, isNew] = known.emplace(identity(mount), drives.size());
        if (isNew) {
            drives.push_back(mount);
        } else if (drives[same->second].root != "/" && mount.root == "/") {
            drives[same->second] = mount;
        }
    }
    return drives;
}

std::string withoutPasswords(std::string_view options) {
    std::string kept;
    while (!options.empty()) {
        const std::string_view option = takeField(options, ',');
        const std::size_t equals = option.find('=');
        const bool cut = equals != std::string_view::npos && isPassword(option.substr(0, equals));
        if (!kept.empty()) kept += ',';
        kept += cut ? option.substr(0, equals + 1) : option;
    }
    return kept;
}

}  // namespace toolkit::quorvah
