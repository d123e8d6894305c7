#include "toolkit/machine/files/MountInfo.h"

#include <gtest/gtest.h>

#include <string>

namespace toolkit {
namespace {

TEST(MountInfo, ALineGivesItsFields) {
    const auto mounts = readMountInfo(
        "36 35 98:0 /sub\\040volume /mnt\\011two rw,noatime shared:1 master:2 - ext3 /dev/my\\134root "
        "rw,errors=continue\n");
    ASSERT_EQ(1U, mounts.size());
    EXPECT_EQ("98:0", mounts[0].device);
    EXPECT_EQ("/sub volume", mounts[0].root);
    EXPECT_EQ("/mnt\ttwo", mounts[0].mountPoint);
    EXPECT_EQ("ext3", mounts[0].type);
    EXPECT_EQ("/dev/my\\root", mounts[0].source);
    EXPECT_EQ("rw,noatime,errors=continue", mounts[0].options);
}

TEST(MountInfo, TheOptionalFieldsMayBeMissing) {
    const auto mounts = readMountInfo("27 1 254:0 / / rw,relatime - ext4 /dev/vda rw,discard");
    ASSERT_EQ(1U, mounts.size());
    EXPECT_EQ("ext4", mounts[0].type);
    EXPECT_EQ("/dev/vda", mounts[0].source);
}

TEST(MountInfo, AnEmptySourceIsAField) {
    const auto mounts = readMountInfo("27 1 0:30 / /t rw - tmpfs  rw,size=4k\n");
    ASSERT_EQ(1U, mounts.size());
    EXPECT_EQ("", mounts[0].source);
    EXPECT_EQ("rw,size=4k", mounts[0].options);
}

TEST(MountInfo, EitherOptionListCanForbidWriting) {
    const struct {
        const char* lists;
        const char* merged;
    } kCases[] = {
        {"rw,relatime - ext4 /dev/a rw,discard", "rw,relatime,discard"},
        {"ro,relatime - ext4 /dev/a rw,discard", "ro,relatime,discard"},
        {"rw,relatime - ext4 /dev/a ro,discard", "ro,relatime,discard"},
        {"rw - ext4 /dev/a rw", "rw"},
        {"rw,a - ext4 /dev/a rw,a,b", "rw,a,b"},
        {"rw,a - ext4 /dev/a", "rw,a"},
        {"rw,a - ext4 /dev/a ,,b,", "rw,a,b"},
    };
    for (const auto& test : kCases) {
        const auto mounts = readMountInfo(std::string("1 2 8:1 / /x ") + test.lists);
        ASSERT_EQ(1U, mounts.size()) << test.lists;
        EXPECT_EQ(test.merged, mounts[0].options) << test.lists;
    }
}

TEST(MountInfo, MalformedLinesAreSkipped) {
    for (const char* const line :
         {"", "\n\n", "1", "1 2 8:1 / /x rw", "1 2 8:1 / /x rw shared:1 -", "garbage line\n",
          "1 2 8:1 /  rw - ext4 /dev/a rw", "1 2 8:1 / /x rw -ext4 /dev/a rw"}) {
        EXPECT_TRUE(readMountInfo(line).empty()) << line;
    }
}

TEST(MountInfo, ATruncatedFileGivesPrefixesOnly) {
    const std::string text =
        "1 2 8:1 / /a rw - ext4 /dev/a rw\n1 2 8:2 / /b\\040c rw shared:1 - xfs /dev/b rw,x\n";
    for (std::size_t length = 0; length <= text.size(); ++length) {
        for (const Mount& mount : readMountInfo(text.substr(0, length))) {
            const bool first = mount.mountPoint == "/a";
            EXPECT_TRUE(first || mount.mountPoint == "/b c") << length;
            EXPECT_EQ(0U, std::string(first ? "ext4" : "xfs").find(mount.type)) << length;
            EXPECT_EQ(0U, std::string(first ? "/dev/a" : "/dev/b").find(mount.source)) << length;
        }
    }
}

TEST(MountTable, LinesOfProcMountsAndFstabAreRead) {
    const auto mounts = readMountTable(
        "# /etc/fstab: static file system information\n"
        "UUID=1234-abcd\t/\text4\terrors=remount-ro 0       1\r\n"
        "  LABEL=my\\040data /srv/my\\040data xfs defaults\n"
        "/dev/sr0 /media/cdrom udf,iso9660 user,noauto 0 0\n"
        "/dev/sda5 none swap sw 0 0\n"
        "/dev/sda6 /not-swap swap sw 0 0\n"
        "proc\n"
        "/dev/sda7 relative ext4\n");
    ASSERT_EQ(2U, mounts.size());
    EXPECT_EQ("UUID=1234-abcd", mounts[0].source);
    EXPECT_EQ("/", mounts[0].mountPoint);
    EXPECT_EQ("ext4", mounts[0].type);
    EXPECT_EQ("errors=remount-ro", mounts[0].options);
    EXPECT_EQ("LABEL=my data", mounts[1].source);
    EXPECT_EQ("/srv/my data", mounts[1].mountPoint);
    EXPECT_EQ("defaults", mounts[1].options);
}

TEST(OctalEscapes, OnlyWholeEscapesAreResolved) {
    const struct {
        const char* text;
        const char* plain;
    } kCases[] = {
        {"a\\040b", "a b"}, {"\\134040", "\\040"}, {"\\303\\244", "\xc3\xa4"},
        {"\\04", "\\04"},   {"\\", "\\"},          {"\\0", "\\0"},
        {"\\089", "\\089"}, {"\\400", "\\400"},    {"\\377", "\xff"},
        {"", ""},           {"\\x20", "\\x20"},    {"\\\\040", "\\ "},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.plain, withoutOctalEscapes(test.text)) << test.text;
}

}  // namespace
}  // namespace toolkit
