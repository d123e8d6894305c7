#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/machine/files/MountInfo.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

const std::string kWorkstation = QUORVAH_TEST_TREES "/workstation";

TEST(LogicalDrive, PseudoFileSystemsAndSecondMountsAreLeftOut) {
    const Report report = gatheredBelow("LogicalDrive", kWorkstation);
    EXPECT_EQ((std::vector<std::string>{"/", "/media/my disk", "/merged", "/net", "/ntfs", "/sshfs", "/twice",
                                        "/zip"}),
              keysOf(report));
    EXPECT_EQ("/dev/sdc2", instanceOf(report, "/twice").get("Name"));
}

TEST(LogicalDrive, EveryFieldComesFromTheTree) {
    const Report report = gatheredBelow("LogicalDrive", kWorkstation);
    EXPECT_EQ(
        "/|/dev/nvme0n1p2|ext4|512000|||false||rw,relatime,errors=remount-ro|root "
        "fs|11111111-2222-3333-4444-555555555555|||false|",
        joined(instanceOf(report, "/")));
    EXPECT_EQ("/media/my disk|/dev/sda1|xfs||||true||ro,nosuid|||||false|",
              joined(instanceOf(report, "/media/my disk")));
    EXPECT_EQ("/ntfs|/dev/sdb1|fuseblk|1048576|||false||rw|||||false|", joined(instanceOf(report, "/ntfs")));
    EXPECT_EQ("/merged|overlay|overlay||||false||rw,lowerdir=/a|||||false|",
              joined(instanceOf(report, "/merged")));
}

TEST(LogicalDrive, RemoteFileSystemsHaveNoSizesAndTheirPasswordsAreCut) {
    const Report report = gatheredBelow("LogicalDrive", kWorkstation);
    EXPECT_EQ("/net|server:/export|nfs4||||false||rw,vers=4.2,password=,addr=192.0.2.9|||||true|",
              joined(instanceOf(report, "/net")));
    EXPECT_EQ("true", instanceOf(report, "/sshfs").get("Remote"));
    EXPECT_EQ("", instanceOf(report, "/zip").get("Remote"));
}

TEST(LogicalDrive, AnImageHasItsDrivesInFstab) {
    const ScratchDir tree;
    tree.write(
        "etc/fstab",
        "UUID=2222 / ext4 ro,errors=remount-ro 0 1\nLABEL=my\\040data /srv ext4 defaults\nproc /proc proc\n");
    const Report report = gatheredBelow("LogicalDrive", tree.path());
    ASSERT_EQ(2U, report.instances().size());
    EXPECT_EQ("/|UUID=2222|ext4||||true||ro,errors=remount-ro||2222|||false|",
              joined(instanceOf(report, "/")));
    EXPECT_EQ("my data", instanceOf(report, "/srv").get("Label"));
}

TEST(LogicalDriveLive, SizesAreThoseOfDf) {
    const Report report = gatheredLive("LogicalDrive");
    EXPECT_FALSE(report.instances().empty());
    EXPECT_EQ("", report.reason());
    for (const Instance& drive : report.instances()) {
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

TEST(LogicalDriveLive, OptionsAreThoseOfFindmnt) {
    const Report report = gatheredLive("LogicalDrive");
    for (const Instance& drive : report.instances()) {
        const Rows lines = linesOf("findmnt -n -v -o OPTIONS,SOURCE -J --target '" + drive.get("Root") +
                                   "' | jq -r '.filesystems[-1] | [.options, .source] | @tsv'");
        ASSERT_EQ(1U, lines.size());
        EXPECT_EQ(lines[0], drive.get("MountOptions") + "\t" + drive.get("Name"));
    }
}

TEST(MountInfoLive, EveryMountIsAsFindmntShowsIt) {
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
