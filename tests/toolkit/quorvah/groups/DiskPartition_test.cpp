#include <gtest/gtest.h>

#include <map>
#include <set>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(DiskPartition, ReportsAGptPartition) {
    expectInstance(kDiskPartition, "x86-server", "/dev/sda1",
                   {{"DeviceID", "/dev/sda1"},
                    {"Name", "EFI System Partition"},
                    {"StartingOffset", "1048576"},
                    {"Size", "629145600"},
                    {"BlockSize", "512"},
                    {"PartitionType", "c12a7328-f81f-11d2-ba4b-00a0c93ec93b"},
                    {"PrimaryPartition", "true"},
                    {"Bootable", "true"},
                    {"DiskName", "/dev/sda"},
                    {"PartitionNumber", "1"},
                    {"PartitionUuid", "1f2e3d4c-5b6a-4798-8a9b-0c1d2e3f4a5b"},
                    {"TableType", "gpt"}});
}

TEST(DiskPartition, ReportsWhatTheKernelKnowsWithoutUdev) {
    expectInstance(kDiskPartition, "x86-server", "/dev/sda2",
                   {{"DeviceID", "/dev/sda2"},
                    {"Name", "from kernel 2"},
                    {"StartingOffset", "630194176"},
                    {"Size", "4000155959296"},
                    {"BlockSize", "512"},
                    {"DiskName", "/dev/sda"},
                    {"PartitionNumber", "2"}});
    expectInstance(kDiskPartition, "arm64-board", "/dev/mmcblk0p2",
                   {{"DeviceID", "/dev/mmcblk0p2"},
                    {"Name", "name with blanks 2"},
                    {"StartingOffset", "272629760"},
                    {"Size", "31642353664"},
                    {"BlockSize", "512"},
                    {"DiskName", "/dev/mmcblk0"},
                    {"PartitionNumber", "2"},
                    {"PartitionUuid", "ab12cd34-02"}});
}

TEST(DiskPartition, DistinguishesPrimaryFromLogicalPartitions) {
    expectInstance(kDiskPartition, "x86-server", "/dev/sdb1",
                   {{"DeviceID", "/dev/sdb1"},
                    {"StartingOffset", "1048576"},
                    {"Size", "1073741824"},
                    {"BlockSize", "4096"},
                    {"PartitionType", "83"},
                    {"PrimaryPartition", "true"},
                    {"Bootable", "true"},
                    {"DiskName", "/dev/sdb"},
                    {"PartitionNumber", "1"},
                    {"PartitionUuid", "9a8b7c6d-01"},
                    {"TableType", "dos"}});
    expectInstance(kDiskPartition, "x86-server", "/dev/sdb5",
                   {{"DeviceID", "/dev/sdb5"},
                    {"StartingOffset", "1075838976"},
                    {"Size", "512000000"},
                    {"BlockSize", "4096"},
                    {"PartitionType", "0e"},
                    {"PrimaryPartition", "false"},
                    {"Bootable", "false"},
                    {"DiskName", "/dev/sdb"},
                    {"PartitionNumber", "5"},
                    {"PartitionUuid", "9a8b7c6d-05"},
                    {"TableType", "dos"}});
}

TEST(DiskPartition, OmitsImpossibleNumbers) {
    expectOnly(kDiskPartition, "contradictory",
               {{"DeviceID", "/dev/sdb1"}, {"Size", "4096"}, {"DiskName", "/dev/sdb"}});
}

TEST(DiskPartition, TheSizeOfAnExtendedPartitionIsThatOfTheTable) {
    const zavtest::ScratchDir tree;
    for (const char* const partition : {"sda2", "sda5"}) {
        const std::string folder = std::string("sys/block/sda/") + partition + "/";
        tree.write(folder + "partition", std::string(1, partition[3]) + "\n");
        tree.write(folder + "size", "2\n");
        tree.write(folder + "dev", std::string("8:") + partition[3] + "\n");
    }
    EXPECT_EQ(instanceOf(gatheredBelow(kDiskPartition, tree.path()), "/dev/sda2").get("Size"), "")
        << "it may be an extended one";
    tree.write("run/udev/data/b8:2",
               "E:ID_PART_ENTRY_SCHEME=dos\nE:ID_PART_ENTRY_TYPE=0xf\nE:ID_PART_ENTRY_NUMBER=2\n"
               "E:ID_PART_ENTRY_SIZE=204800\n");
    tree.write("run/udev/data/b8:5",
               "E:ID_PART_ENTRY_SCHEME=dos\nE:ID_PART_ENTRY_TYPE=0x83\nE:ID_PART_ENTRY_NUMBER=5\n"
               "E:ID_PART_ENTRY_SIZE=2\n");
    const GroupData data = gatheredBelow(kDiskPartition, tree.path());
    EXPECT_EQ(instanceOf(data, "/dev/sda2").get("Size"), "104857600");
    EXPECT_EQ(instanceOf(data, "/dev/sda5").get("Size"), "1024");
}

std::string withoutPrefix(const std::string& number) {
    return number.starts_with("0x") ? number.substr(2) : number;
}

TEST(DiskPartitionLive, MatchLsblk) {
    const GroupData data = gatheredLive(kDiskPartition);
    std::set<std::string> theirs;
    for (const std::string& line :
         linesOf("LC_ALL=C lsblk -b -P -o "
                 "NAME,SIZE,PKNAME,TYPE,START,LOG-SEC,PARTTYPE,PARTUUID,PARTLABEL,PTTYPE")) {
        std::map<std::string, std::string> row = pairsOf(line);
        if (row["TYPE"] != "part") continue;
        const Instance& partition = instanceOf(data, "/dev/" + row["NAME"]);
        EXPECT_EQ(partition.get("Size"), row["SIZE"]);
        EXPECT_EQ(partition.get("DiskName"), "/dev/" + row["PKNAME"]);
        if (!row["START"].empty())
            expectKnown(partition, "StartingOffset", std::to_string(512 * std::stoull(row["START"])));
        expectKnown(partition, "BlockSize", row["LOG-SEC"]);
        const std::string type = withoutPrefix(row["PARTTYPE"]);
        expectKnown(partition, "PartitionType", type.size() == 1 ? "0" + type : type);
        expectKnown(partition, "PartitionUuid", row["PARTUUID"]);
        expectKnown(partition, "Name", row["PARTLABEL"]);
        expectKnown(partition, "TableType", row["PTTYPE"]);
        theirs.insert("/dev/" + row["NAME"]);
    }
    const Rows keys = keysOf(data);
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()), theirs);
}

}  // namespace
}  // namespace toolkit::quorvah
