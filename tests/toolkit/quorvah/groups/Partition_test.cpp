#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

// sda1 is the file system of the firmware, sda2 and sdb1 a RAID 1 with LUKS, in it LVM with a root file system and
// swap space.
class PartitionTest : public testing::Test {
  protected:
    void device(const std::string& name, const std::string& number, const std::string& sectors) const {
        tree_.write("sys/block/" + name + "/dev", number + "\n");
        tree_.write("sys/block/" + name + "/size", sectors + "\n");
        tree_.write("sys/block/" + name + "/queue/logical_block_size", "512\n");
        tree_.link("sys/class/block/" + name, "../../block/" + name);
    }
    void partition(const std::string& disk, const std::string& name, const std::string& number,
                   const std::string& sectors) const {
        const std::string directory = "sys/block/" + disk + "/" + name;
        tree_.write(directory + "/partition", "1\n");
        tree_.write(directory + "/dev", number + "\n");
        tree_.write(directory + "/size", sectors + "\n");
        tree_.link("sys/class/block/" + name, "../../" + directory.substr(4));
    }
    void mapped(const std::string& name, const std::string& number, const std::string& dmName,
                const std::string& uuid, const std::string& below) const {
        device(name, number, "2048");
        tree_.write("sys/block/" + name + "/dm/name", dmName + "\n");
        tree_.write("sys/block/" + name + "/dm/uuid", uuid + "\n");
        tree_.write("sys/block/" + name + "/slaves/" + below, "");
    }
    void udev(const std::string& number, const std::string& text) const {
        tree_.write("run/udev/data/b" + number, text);
    }

    const ScratchDir tree_;
};

TEST_F(PartitionTest, WithoutUdevAnExtendedPartitionIsToldByItsLogicalOnes) {
    device("sda", "8:0", "400000");
    partition("sda", "sda1", "8:1", "2");
    tree_.write("sys/block/sda/sda1/partition", "1\n");
    EXPECT_EQ(keysOf(gatheredBelow(kPartition, tree_.path())), std::vector<std::string>{"/dev/sda1"})
        << "it is a small partition";
    partition("sda", "sda5", "8:5", "2");
    tree_.write("sys/block/sda/sda5/partition", "5\n");
    EXPECT_EQ(keysOf(gatheredBelow(kPartition, tree_.path())), std::vector<std::string>{"/dev/sda5"});
}

TEST_F(PartitionTest, FollowsVolumesFromTheDiskToTheMountPoint) {
    device("sda", "8:0", "1000000");
    partition("sda", "sda1", "8:1", "2048");
    partition("sda", "sda2", "8:2", "900000");
    partition("sda", "sda3", "8:3", "2");
    partition("sda", "sda4", "8:4", "64");
    udev(
        "8:1",
        "E:ID_FS_TYPE=vfat\nE:ID_FS_USAGE=filesystem\nE:ID_FS_LABEL_ENC=EFI\\x20A\nE:ID_FS_UUID=AB12-34CD\n");
    udev("8:2", "E:ID_FS_TYPE=linux_raid_member\nE:ID_FS_USAGE=raid\n");
    udev("8:3", "E:ID_PART_ENTRY_SCHEME=dos\nE:ID_PART_ENTRY_TYPE=0x5\n");
    udev("8:4", "E:ID_PART_ENTRY_SCHEME=dos\nE:ID_PART_ENTRY_TYPE=0x83\n");
    device("md0", "9:0", "899000");
    tree_.write("sys/block/md0/md/level", "raid1\n");
    tree_.write("sys/block/md0/md/array_state", "active\n");
    tree_.write("sys/block/md0/md/sync_action", "idle\n");
    tree_.write("sys/block/md0/md/degraded", "1\n");
    tree_.write("sys/block/md0/slaves/sda2", "");
    tree_.write("sys/block/md0/holders/dm-0", "");
    mapped("dm-0", "254:0", "crypt", "CRYPT-LUKS2-0011-crypt", "md0");
    tree_.write("sys/block/dm-0/holders/dm-1", "");
    mapped("dm-1", "254:1", "vg-root", "LVM-abc", "dm-0");
    mapped("dm-2", "254:2", "vg-swap", "LVM-def", "dm-0");
    tree_.write("proc/self/mountinfo",
                "20 1 254:1 / / rw - ext4 /dev/mapper/vg-root rw\n"
                "21 20 254:1 /srv /srv rw - ext4 /dev/mapper/vg-root rw\n"
                "22 20 8:1 / /boot/efi rw - vfat /dev/sda1 rw\n");
    tree_.write("proc/swaps", "Filename\tType\tSize\tUsed\tPriority\n/dev/mapper/vg-swap partition 1 0 -2\n");
    const GroupData data = gatheredBelow(kPartition, tree_.path());
    EXPECT_EQ((std::vector<std::string>{"/dev/mapper/crypt", "/dev/mapper/vg-root", "/dev/mapper/vg-swap",
                                        "/dev/md0", "/dev/sda1", "/dev/sda2", "/dev/sda4"}),
              keysOf(data));
    expectAll(kPartition, instanceOf(data, "/dev/sda1"),
              {{"DeviceID", "/dev/sda1"},
               {"Name", "sda1"},
               {"Size", "1048576"},
               {"BlockSize", "512"},
               {"FileSystemType", "vfat"},
               {"Usage", "filesystem"},
               {"Label", "EFI A"},
               {"Uuid", "AB12-34CD"},
               {"MountPoint", "/boot/efi"},
               {"Parents", "/dev/sda"}});
    EXPECT_EQ("raid", instanceOf(data, "/dev/sda2").get("Usage"));
    EXPECT_EQ("unused", instanceOf(data, "/dev/sda4").get("Usage"));
    expectAll(kPartition, instanceOf(data, "/dev/md0"),
              {{"DeviceID", "/dev/md0"},
               {"Name", "md0"},
               {"Size", "460288000"},
               {"BlockSize", "512"},
               {"Usage", "crypto"},
               {"Parents", "/dev/sda2"},
               {"RaidLevel", "raid1"},
               {"RaidState", "degraded"}});
    expectAll(kPartition, instanceOf(data, "/dev/mapper/vg-root"),
              {{"DeviceID", "/dev/mapper/vg-root"},
               {"Name", "dm-1"},
               {"Size", "1048576"},
               {"BlockSize", "512"},
               {"FileSystemType", "ext4"},
               {"Usage", "filesystem"},
               {"MountPoint", "/;/srv"},
               {"Parents", "/dev/mapper/crypt"},
               {"DmName", "vg-root"},
               {"DmUuid", "LVM-abc"}});
    EXPECT_EQ("lvm", instanceOf(data, "/dev/mapper/crypt").get("Usage"));
    EXPECT_EQ("swap", instanceOf(data, "/dev/mapper/vg-swap").get("Usage"));
}

TEST_F(PartitionTest, AWholeDeviceIsListedOnlyIfItCarriesSomething) {
    device("vda", "254:16", "2048");
    device("vdb", "254:32", "2048");
    device("sr0", "11:0", "0");
    tree_.write("proc/self/mountinfo", "20 1 254:16 / /data rw - xfs /dev/vda rw\n");
    const GroupData data = gatheredBelow(kPartition, tree_.path());
    ASSERT_EQ((std::vector<std::string>{"/dev/vda"}), keysOf(data));
    EXPECT_EQ("xfs", data.instances().front().get("FileSystemType"));
}

TEST_F(PartitionTest, WithoutUdevAContentThatNobodyUsesIsUnknown) {
    device("vda", "254:0", "4096");
    partition("vda", "vda1", "254:1", "2048");
    const GroupData data = gatheredBelow(kPartition, tree_.path());
    ASSERT_EQ(1U, data.instances().size());
    EXPECT_EQ("", data.instances().front().get("Usage"));
}

TEST(PartitionLive, VolumesMatchLsblk) {
    Rows theirs;
    for (const std::string& line : linesOf("lsblk -Pnbo KNAME,SIZE,TYPE,PARTTYPE || test ! -e /sys/block")) {
        std::map<std::string, std::string> pairs = pairsOf(line);
        const bool extended =
            pairs["PARTTYPE"] == "0x5" || pairs["PARTTYPE"] == "0xf" || pairs["PARTTYPE"] == "0x85";
        if (pairs["TYPE"] == "disk" || pairs["TYPE"] == "loop" || pairs["TYPE"] == "rom" || extended)
            continue;
        theirs.push_back(pairs["KNAME"] + "\t" + pairs["SIZE"]);
    }
    const GroupData data = gatheredLive(kPartition);
    const Rows ours = rowsOf(data, {"Name", "Size"});
    std::ranges::sort(theirs);
    theirs.erase(std::unique(theirs.begin(), theirs.end()), theirs.end());
    for (const std::string& volume : theirs) EXPECT_NE(ours.end(), std::ranges::find(ours, volume)) << volume;
}

const Instance* findExtent(const GroupData& data, const std::string& name) {
    for (const Instance& extent : data.instances()) {
        if (extent.get("Name") == name || extent.get("DeviceID") == name) return &extent;
    }
    return nullptr;
}

TEST(PartitionLive, ContentsMatchLsblk) {
    const GroupData data = gatheredLive(kPartition);
    for (const std::string& line :
         linesOf("lsblk -Pnbo KNAME,FSTYPE,LABEL,UUID,LOG-SEC || test ! -e /sys/block")) {
        std::map<std::string, std::string> pairs = pairsOf(line);
        const Instance* const extent = findExtent(data, pairs["KNAME"]);
        if (extent == nullptr) continue;
        expectKnown(*extent, "FileSystemType", pairs["FSTYPE"]);
        expectKnown(*extent, "Label", pairs["LABEL"]);
        expectKnown(*extent, "Uuid", pairs["UUID"]);
        expectKnown(*extent, "BlockSize", pairs["LOG-SEC"]);
    }
}

// Loop devices and drives without a medium are not partitions; every other device with a content is.
TEST(PartitionLive, ContentsMatchBlkid) {
    const GroupData data = gatheredLive(kPartition);
    constexpr int kNothingFound = 2;
    const std::string command = "blkid -c /dev/null -o export || test $? = " + std::to_string(kNothingFound);
    std::map<std::string, std::string> device;
    Rows lines = linesOf("PATH=$PATH:/usr/sbin:/sbin; " + command);
    lines.emplace_back();
    for (const std::string& line : lines) {
        const std::size_t equals = line.find('=');
        if (equals != std::string::npos) device[line.substr(0, equals)] = line.substr(equals + 1);
        if (!line.empty() || device.empty()) continue;
        const std::string name = device["DEVNAME"];
        const bool excluded = name.starts_with("/dev/loop") || name.starts_with("/dev/zram") ||
                              name.starts_with("/dev/sr") || device["TYPE"].empty();
        const Instance* const extent = findExtent(data, name);
        if (!excluded && geteuid() == 0) {
            EXPECT_NE(extent, nullptr) << name;
        }
        if (extent != nullptr) {
            expectKnown(*extent, "FileSystemType", device["TYPE"]);
            expectKnown(*extent, "Label", device["LABEL"]);
            expectKnown(*extent, "Uuid", device["UUID"]);
        }
        device.clear();
    }
}

}  // namespace
}  // namespace toolkit::quorvah
