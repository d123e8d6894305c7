#include "toolkit/machine/files/AvoidedMounts.h"

#include <gtest/gtest.h>

namespace toolkit {
namespace {

Mount mountOf(const char* mountPoint, const char* type, const char* device = "0:7") {
    Mount mount;
    mount.device = device;
    mount.mountPoint = mountPoint;
    mount.type = type;
    return mount;
}

TEST(AvoidedMounts, WhatAnotherMachineOrAProgramProvidesIsAvoided) {
    for (const char* const type :
         {"nfs", "nfs4", "cifs", "fuse", "fuse.sshfs", "fuseblk", "autofs", "9p", "virtiofs"}) {
        const AvoidedMounts avoided({mountOf("/", "ext4", "8:1"), mountOf("/mnt/a", type)}, "/");
        EXPECT_FALSE(avoided.empty()) << type;
        EXPECT_TRUE(avoided.contain("/mnt/a")) << type;
        EXPECT_TRUE(avoided.contain("/mnt/a/b/c")) << type;
        EXPECT_FALSE(avoided.contain("/mnt/ab")) << type;
        EXPECT_FALSE(avoided.contain("/mnt")) << type;
        EXPECT_FALSE(avoided.contain("/")) << type;
    }
    for (const char* const type : {"ext4", "tmpfs", "overlay", "proc", "sysfs", "fuse.lxcfs"})
        EXPECT_TRUE(AvoidedMounts({mountOf("/mnt/a", type)}, "/").empty()) << type;
}

TEST(AvoidedMounts, TheFileSystemOfTheTreeIsNotAvoidedWhereverItIsMounted) {
    const std::vector<Mount> mounts = {mountOf("/", "nfs4", "0:30"), mountOf("/usr", "nfs4", "0:30"),
                                       mountOf("/home", "nfs4", "0:31")};
    const AvoidedMounts avoided(mounts, "/");
    EXPECT_FALSE(avoided.contain("/etc"));
    EXPECT_FALSE(avoided.contain("/usr/lib"));
    EXPECT_TRUE(avoided.contain("/home/ada"));
    EXPECT_TRUE(AvoidedMounts(mounts, "/home/ada").empty()) << "the user named this tree";
}

TEST(AvoidedMounts, PathsOfATreeBelowADirectoryBeginThere) {
    const AvoidedMounts avoided({mountOf("/", "ext4", "8:1"), mountOf("/srv/tree/etc", "fuse"),
                                 mountOf("/srv/treehouse/usr", "fuse"), mountOf("/var", "nfs")},
                                "/srv/tree");
    EXPECT_TRUE(avoided.contain("/etc/passwd"));
    EXPECT_FALSE(avoided.contain("/usr"));
    EXPECT_FALSE(avoided.contain("/var"));
    EXPECT_FALSE(avoided.contain("/srv/tree/etc"));
}

TEST(AvoidedMounts, TheLastMountAtAPlaceCounts) {
    EXPECT_TRUE(AvoidedMounts({mountOf("/boot", "autofs"), mountOf("/boot", "vfat", "8:2")}, "/").empty());
    EXPECT_TRUE(
        AvoidedMounts({mountOf("/boot", "vfat", "8:2"), mountOf("/boot", "nfs")}, "/").contain("/boot"));
}

TEST(AvoidedMounts, TheBaseOfAPathIsTheMountThatShowsIt) {
    const AvoidedMounts avoided(
        {mountOf("/", "ext4", "8:1"), mountOf("/proc", "proc"), mountOf("/var", "xfs"),
         mountOf("/var/lib/x", "nfs"), mountOf("/var/lib/y/z", "ext4", "8:3")},
        "/");
    EXPECT_EQ(avoided.baseOf("/proc/self/stat"), "/proc");
    EXPECT_EQ(avoided.baseOf("/var/lib/dpkg/status"), "/var");
    EXPECT_EQ(avoided.baseOf("/var/lib/y/z/file"), "/var/lib/y/z");
    EXPECT_EQ(avoided.baseOf("/var"), "/") << "a mount point lies in the mount above it";
    EXPECT_EQ(avoided.baseOf("/etc"), "/");
    EXPECT_EQ(avoided.baseOf("/"), "/");
}

}  // namespace
}  // namespace toolkit
