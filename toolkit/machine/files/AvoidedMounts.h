#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "toolkit/machine/files/MountInfo.h"

namespace toolkit {

// Whether the files of a file system of this type ("nfs4", "fuse.sshfs", "autofs") come from another machine or from a
// program, so that even a stat() may take forever.
bool isRemoteFileSystem(std::string_view type);

// The mounted file systems of a tree that a scan does not look at, because another machine or a program may never answer.
class AvoidedMounts {
  public:
    AvoidedMounts() = default;
    // Those below the directory `top`, a path without links. The file system that contains `top` is not avoided wherever it
    // is mounted, and neither is the one that shows a container its part of /proc.
    AvoidedMounts(const std::vector<Mount>& mounts, const std::string& top);

    bool empty() const { return avoided_.empty(); }
    // Whether a path of the tree, "/home/ada", is in one of them. REQUIRES: the path has no links.
    bool contain(std::string_view path) const;
    // The innermost other mount point above a path, "/" if there is none.
    std::string_view baseOf(std::string_view path) const;

  private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
    };
    using Paths = std::unordered_set<std::string, Hash, std::equal_to<>>;

    Paths avoided_;
    Paths others_;
};

}  // namespace toolkit
