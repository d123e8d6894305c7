#include <gtest/gtest.h>

#include <set>
#include <string>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/machine/files/MountInfo.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(LogicalDrive, PseudoFileSystemsAndRepeatedMountsAreOmitted) {
    const GroupData data = gatheredTree(kLogicalDrive, "workstation");
    EXPECT_EQ((std::vector<std::string>{"/", "/media/my disk", "/merged", "/net", "/ntfs", "/sshfs", "/twice",
                                        "/zip"}),
              keysOf(data));
    EXPECT_EQ("/dev/sdc2", instanceOf(data, "/twice").get("Name"));
}

TEST(LogicalDrive, EveryFieldComesFromTheTree) {
    const GroupData data = gatheredTree(kLogicalDrive, "workstation");
    expectAll(data.group(), instanceOf(data, "/"),
              {{"Root", "/"},
               {"Name", "/dev/nvme0n1p2"},
               {"FileSystemType", "ext4"},
               {"FileSystemSize", "512000"},
               {"ReadOnly", "false"},
               {"MountOptions", "rw,relatime,errors=remount-ro"},
               {"Label", "root fs"},
               {"Uuid", "11111111-2222-3333-4444-555555555555"},
               {"Remote", "false"}});
    expectAll(data.group(), instanceOf(data, "/media/my disk"),
              {{"Root", "/media/my disk"},
               {"Name", "/dev/sda1"},
               {"FileSystemType", "xfs"},
               {"ReadOnly", "true"},
               {"MountOptions", "ro,nosuid"},
               {"Remote", "false"}});
    expectAll(data.group(), instanceOf(data, "/ntfs"),
              {{"Root", "/ntfs"},
               {"Name", "/dev/sdb1"},
               {"FileSystemType", "fuseblk"},
               {"FileSystemSize", "1048576"},
               {"ReadOnly", "false"},
               {"MountOptions", "rw"},
               {"Remote", "false"}});
    expectAll(data.group(), instanceOf(data, "/merged"),
              {{"Root", "/merged"},
               {"Name", "overlay"},
               {"FileSystemType", "overlay"},
               {"ReadOnly", "false"},
               {"MountOptions", "rw,lowerdir=/a"},
               {"Remote", "false"}});
}

TEST(LogicalDrive, RemoteFileSystemsHaveNoSizesAndNoPasswords) {
    const GroupData data = gatheredTree(kLogicalDrive, "workstation");
    expectAll(data.group(), instanceOf(data, "/net"),
              {{"Root", "/net"},
               {"Name", "server:/export"},
               {"FileSystemType", "nfs4"},
               {"ReadOnly", "false"},
               {"MountOptions", "rw,vers=4.2,password=,addr=192.0.2.9"},
               {"Remote", "true"}});
    EXPECT_EQ("true", instanceOf(data, "/sshfs").get("Remote"));
    EXPECT_EQ("", instanceOf(data, "/zip").get("Remote"));
}

TEST(LogicalDrive, DrivesOfAnImageComeFromFstab) {
    const ScratchDir tree;
    tree.write(
        "etc/fstab",
        "UUID=2222 / ext4 ro,errors=remount-ro 0 1\nLABEL=my\\040data /srv ext4 defaults\nproc /proc proc\n");
    const GroupData data = gatheredBelow(kLogicalDrive, tree.path());
    ASSERT_EQ(2U, data.instances().size());
    expectAll(data.group(), instanceOf(data, "/"),
              {{"Root", "/"},
               {"Name", "UUID=2222"},
               {"FileSystemType", "ext4"},
               {"ReadOnly", "true"},
               {"MountOptions", "ro,errors=remount-ro"},
               {"Uuid", "2222"},
               {"Remote", "false"}});
    EXPECT_EQ("my data", instanceOf(data, "/srv").get("Label"));
}

TEST(LogicalDriveLive, SizesMatchDf) {
    const GroupData data = gatheredLive(kLogicalDrive);
    EXPECT_FALSE(data.instances().empty());
    EXPECT_EQ("", data.reason());
    for (const Instance& drive : data.instances()) {
        if (drive.get("Remote") != "false" || drive.get("FileSystemType") == "fuseblk") continue;
        const Rows lines =
            linesOf("df -B1 --output=size,itotal,fstype '" + drive.get("Root") + "' | tail -n 1");
        ASSERT_EQ(1U, lines.size());
        Rows words;
        for (const std::string& word : fieldsOf(lines[0], ' ')) {
            if (!word.empty()) words.push_back(word);
        }
        ASSERT_EQ(3U, words.size()) << lines[0];
        EXPECT_EQ(words[0], drive.get("FileSystemSize"));
        EXPECT_EQ(words[1], drive.get("InodesTotal"));
        EXPECT_EQ(words[2], drive.get("FileSystemType"));
    }
}

TEST(LogicalDriveLive, OptionsMatchFindmnt) {
    const GroupData data = gatheredLive(kLogicalDrive);
    for (const Instance& drive : data.instances()) {
        const Rows lines = linesOf("findmnt -n -v -o OPTIONS,SOURCE -J --target '" + drive.get("Root") +
                                   "' | jq -r '.filesystems[-1] | [.options, .source] | @tsv'");
        ASSERT_EQ(1U, lines.size());
        EXPECT_EQ(lines[0], drive.get("MountOptions") + "\t" + drive.get("Name"));
    }
}

TEST(LogicalDriveLive, LabelsMatchFindmnt) {
    const GroupData data = gatheredLive(kLogicalDrive);
    for (const Instance& drive : data.instances()) {
        const Rows lines = linesOf("findmnt -n -o LABEL,UUID,FSTYPE -J --target '" + drive.get("Root") +
                                   "' | jq -r '.filesystems[-1] | [.label, .uuid, .fstype] | @tsv'");
        ASSERT_EQ(1U, lines.size());
        const Rows fields = fieldsOf(lines[0]);
        if (!fields[0].empty()) {
            EXPECT_EQ(fields[0], drive.get("Label")) << joined(drive);
        }
        if (!fields[1].empty()) {
            EXPECT_EQ(fields[1], drive.get("Uuid")) << joined(drive);
        }
        EXPECT_EQ(fields[2], drive.get("FileSystemType")) << joined(drive);
    }
}

// A device that is mounted at several places is one drive.
TEST(LogicalDriveLive, EveryMountedDeviceIsADrive) {
    std::set<std::string> ours;
    const GroupData data = gatheredLive(kLogicalDrive);
    for (const Instance& drive : data.instances()) ours.insert(drive.get("Name"));
    for (const std::string& line : linesOf("findmnt -n -v -l --real -o SOURCE || test $? = 1")) {
        if (line.starts_with("/dev/")) {
            EXPECT_TRUE(ours.contains(line)) << line;
        }
    }
}

TEST(MountInfoLive, EveryMountMatchesFindmnt) {
    const Rows theirs = linesOf(
        "findmnt -J --list -v -o TARGET,SOURCE,FSTYPE,MAJ:MIN,FSROOT | jq -r '.filesystems[] | "
        "[.target, .source // \"\", .fstype, .[\"maj:min\"], .fsroot] | join(\"|\")'");
    EXPECT_FALSE(theirs.empty());
    Rows ours;
    for (const Mount& mount : readMountInfo(Root().read("/proc/self/mountinfo").value_or(""))) {
        ours.push_back(mount.mountPoint + "|" + mount.source + "|" + mount.type + "|" + mount.device + "|" +
                       mount.root);
    }
    EXPECT_EQ(sorted(theirs), sorted(ours));
}

}  // namespace
}  // namespace toolkit::quorvah
