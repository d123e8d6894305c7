#include "toolkit/quorvah/sources/MountedDrives.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

Mount mountOf(const char* type, const char* mountPoint = "/x") {
    Mount mount;
    mount.type = type;
    mount.mountPoint = mountPoint;
    return mount;
}

TEST(MountedDrives, TypesAreClassified) {
    const struct {
        const char* type;
        FileSystemKind kind;
    } kCases[] = {
        {"ext4", FileSystemKind::Local},         {"overlay", FileSystemKind::Local},
        {"squashfs", FileSystemKind::Local},     {"some-new-fs", FileSystemKind::Local},
        {"proc", FileSystemKind::Pseudo},        {"autofs", FileSystemKind::Pseudo},
        {"tmpfs", FileSystemKind::Pseudo},       {"fuse.lxcfs", FileSystemKind::Pseudo},
        {"nfs4", FileSystemKind::Remote},        {"cifs", FileSystemKind::Remote},
        {"fuse.sshfs", FileSystemKind::Remote},  {"9p", FileSystemKind::Remote},
        {"fuse", FileSystemKind::Fuse},          {"fuseblk", FileSystemKind::Fuse},
        {"fuse.anything", FileSystemKind::Fuse},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.kind, fileSystemKind(mountOf(test.type))) << test.type;
}

TEST(MountedDrives, ARootInMemoryIsLocal) {
    EXPECT_EQ(FileSystemKind::Local, fileSystemKind(mountOf("tmpfs", "/")));
    EXPECT_EQ(FileSystemKind::Local, fileSystemKind(mountOf("ramfs", "/")));
    EXPECT_EQ(FileSystemKind::Pseudo, fileSystemKind(mountOf("proc", "/")));
}

TEST(MountedDrives, PasswordsAreRemoved) {
    const struct {
        const char* options;
        const char* kept;
    } kCases[] = {
        {"rw,password=x,user=me", "rw,password=,user=me"},
        {"pass=a=b", "pass="},
        {"passwd=", "passwd="},
        {"secret=k,secretfile=/f", "secret=,secretfile=/f"},
        {"password", "password"},
        {"", ""},
        {"rw", "rw"},
        {"pwd=x", "pwd="},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.kept, withoutPasswords(test.options)) << test.options;
}

}  // namespace
}  // namespace toolkit::quorvah
