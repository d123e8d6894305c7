#include "toolkit/quorvis/walk/MountTable.h"

#include <filesystem>
#include <system_error>

#include "toolkit/machine/files/AvoidedMounts.h"
#include "toolkit/machine/files/MountInfo.h"

namespace toolkit::quorvis {

namespace {

// The path of the tree on the host. Empty for the live machine.
std::string pathOfTree(const Root& root) {
    if (root.live()) return {};
    std::error_code error;
    std::string path = std::filesystem::canonical(root.directory(), error);
    return path == "/" ? std::string() : path;
}

}  // namespace

MountTable::MountTable(const Root& root) {
    const std::string tree = pathOfTree(root);
    for (Mount& mount : readMountInfo(Root().read("/proc/self/mountinfo").value_or(std::string()))) {
        std::string& path = mount.mountPoint;
        if (!path.starts_with(tree)) continue;
        path.erase(0, tree.size());
        if (path.size() < 2 || path.front() != '/') continue;  // the tree itself is always walked
        mounts_[path] = isRemoteFileSystem(mount.type) ? Kind::Remote : Kind::Local;
    }
    for (const auto& [path, kind] : mounts_) anyRemote_ = anyRemote_ || kind == Kind::Remote;
}

MountTable::Kind MountTable::at(std::string_view path) const {
    const auto found = mounts_.find(path);
    return found == mounts_.end() ? Kind::None : found->second;
}

}  // namespace toolkit::quorvis
