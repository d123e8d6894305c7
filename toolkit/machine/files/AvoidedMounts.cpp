#include "toolkit/machine/files/AvoidedMounts.h"

#include <algorithm>
#include <array>
#include <unordered_map>

namespace toolkit {

namespace {

constexpr std::array<std::string_view, 25> kRemoteTypes = {
    "9p",       "acfs",  "afs",  "autofs", "beegfs", "ceph",      "cifs",     "coda", "davfs",
    "fuse",     "gfs",   "gfs2", "gpfs",   "lustre", "ncpfs",     "nfs",      "nfs4", "ocfs2",
    "orangefs", "pvfs2", "smb3", "smbfs",  "vboxsf", "glusterfs", "virtiofs",
};

// A program provides the files of an NTFS volume that is mounted with FUSE, though they are on this machine. In containers a
// program also provides some files of /proc; the machine does not work without it.
bool mayNeverAnswer(std::string_view type) {
    return type != "fuse.lxcfs" && (type == "fuseblk" || isRemoteFileSystem(type));
}

// The path of a mount point within the tree; empty if it is not below the top.
std::string_view below(std::string_view top, std::string_view mountPoint) {
    if (top == "/") return mountPoint == "/" ? std::string_view() : mountPoint;
    const bool isBelow =
        mountPoint.size() > top.size() && mountPoint.starts_with(top) && mountPoint[top.size()] == '/';
    return isBelow ? mountPoint.substr(top.size()) : std::string_view();
}

// The device number of the file system that contains the directory `top`.
std::string deviceAt(const std::vector<Mount>& mounts, std::string_view top) {
    const Mount* innermost = nullptr;
    for (const Mount& mount : mounts) {
        const bool contains = mount.mountPoint == top || !below(mount.mountPoint, top).empty();
        if (!contains) continue;
        if (innermost == nullptr || mount.mountPoint.size() >= innermost->mountPoint.size())
            innermost = &mount;
    }
    return innermost == nullptr ? std::string() : innermost->device;
}

// The end of the parent of a path: 5 for "/home/ada", 0 for "/home".
std::size_t parentOf(std::string_view path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string_view::npos ? 0 : slash;
}

}  // namespace

bool isRemoteFileSystem(std::string_view type) {
    return type.starts_with("fuse.") || std::ranges::find(kRemoteTypes, type) != kRemoteTypes.end();
}

AvoidedMounts::AvoidedMounts(const std::vector<Mount>& mounts, const std::string& top) {
    std::unordered_map<std::string_view, const Mount*> latest;  // per path in the tree; it hides earlier ones
    for (const Mount& mount : mounts) {
        const std::string_view path = below(top, mount.mountPoint);
        if (!path.empty()) latest[path] = &mount;
    }
    const std::string device = deviceAt(mounts, top);
    for (const auto& [path, mount] : latest) {
        const bool avoided = mayNeverAnswer(mount->type) && (device.empty() || mount->device != device);
        (avoided ? avoided_ : others_).emplace(path);
    }
}

bool AvoidedMounts::contain(std::string_view path) const {
    for (; !path.empty(); path = path.substr(0, parentOf(path))) {
        if (avoided_.contains(path)) return true;
    }
    return false;
}

std::string_view AvoidedMounts::baseOf(std::string_view path) const {
    for (path = path.substr(0, parentOf(path)); !path.empty(); path = path.substr(0, parentOf(path))) {
        if (others_.contains(path)) return path;
    }
    return "/";
}

}  // namespace toolkit
