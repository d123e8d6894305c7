#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/Expectations.h"
#include "toolkit/quorvah/groups/GroupTable.h"

using toolkit::quorvah::expectInstance;
using toolkit::quorvah::expectOnly;
using toolkit::quorvah::gatherTree;
using toolkit::quorvah::kDiskPartition;
using toolkit::quorvah::keysOf;
using toolkit::quorvah::kStorage;

TEST(StorageGroup, ListsDrivesAndNothingMadeUpOfThem) {
    EXPECT_EQ(keysOf(gatherTree(kStorage, "x86-server")),
              (std::vector<std::string>{"/dev/nvme0n1", "/dev/sda", "/dev/sdb", "/dev/sdc", "/dev/sr0"}));
}

TEST(StorageGroup, TellsAllOfASataDisk) {
    expectInstance(kStorage, "x86-server", "/dev/sda",
                   {{"DeviceID", "/dev/sda"},
                    {"Name", "sda"},
                    {"Model", "ST4000NM0035-1V4"},
                    {"SerialNumber", "ZC1ABCDE"},
                    {"FirmwareRevision", "TN03"},
                    {"Size", "4000787030016"},
                    {"BlockSize", "512"},
                    {"NumberOfBlocks", "7814037168"},
                    {"MediaType", "HDD"},
                    {"InterfaceType", "SATA"},
                    {"PhysicalBlockSize", "4096"},
                    {"WorldWideName", "5000c500a1b2c3d4"},
                    {"Removable", "false"},
                    {"ReadOnly", "false"},
                    {"BusAddress", "0:0:0:0"},
                    {"Multipath", "false"}});
}

TEST(StorageGroup, TellsAllOfOnePathToASasDisk) {
    expectInstance(kStorage, "x86-server", "/dev/sdb",
                   {{"DeviceID", "/dev/sdb"},
                    {"Name", "sdb"},
                    {"Manufacturer", "TOSHIBA"},
                    {"Model", "PX05SMB120"},
                    {"SerialNumber", "58S0A00AT1EE"},
                    {"FirmwareRevision", "AS05"},
                    {"Size", "1200243695616"},
                    {"BlockSize", "4096"},
                    {"NumberOfBlocks", "293028246"},
                    {"MediaType", "SSD"},
                    {"InterfaceType", "SAS"},
                    {"PhysicalBlockSize", "4096"},
                    {"WorldWideName", "58ce38ee20aabbcc"},
                    {"Removable", "false"},
                    {"ReadOnly", "false"},
                    {"BusAddress", "1:0:0:0"},
                    {"Multipath", "true"}});
}

TEST(StorageGroup, TellsAllOfAnNvmeDisk) {
    expectInstance(kStorage, "x86-server", "/dev/nvme0n1",
                   {{"DeviceID", "/dev/nvme0n1"},
                    {"Name", "nvme0n1"},
                    {"Model", "SAMSUNG MZQLB960HAJR-00007"},
                    {"SerialNumber", "S437NX0M900001"},
                    {"FirmwareRevision", "EDA5502Q"},
                    {"Size", "960197124096"},
                    {"BlockSize", "512"},
                    {"NumberOfBlocks", "1875385008"},
                    {"MediaType", "SSD"},
                    {"InterfaceType", "NVMe"},
                    {"PhysicalBlockSize", "512"},
                    {"WorldWideName", "36344730526000420025384100000001"},
                    {"Removable", "false"},
                    {"ReadOnly", "false"},
                    {"BusAddress", "0000:5e:00.0"},
                    {"Multipath", "false"}});
}

TEST(StorageGroup, TakesAUsbStickForFlashThoughItClaimsToRotate) {
    expectInstance(kStorage, "x86-server", "/dev/sdc",
                   {{"DeviceID", "/dev/sdc"},
                    {"Name", "sdc"},
                    {"Manufacturer", "SanDisk"},
                    {"Model", "Ultra"},
                    {"SerialNumber", "4C530001230806112345"},
                    {"FirmwareRevision", "1.00"},
                    {"Size", "30943995904"},
                    {"BlockSize", "512"},
                    {"NumberOfBlocks", "60437492"},
                    {"MediaType", "Flash"},
                    {"InterfaceType", "USB"},
                    {"PhysicalBlockSize", "512"},
                    {"Removable", "true"},
                    {"ReadOnly", "false"},
                    {"BusAddress", "6:0:0:0"},
                    {"Multipath", "false"}});
}

TEST(StorageGroup, TellsAnOpticalDrive) {
    const toolkit::quorvah::Report report = gatherTree(kStorage, "x86-server");
    const toolkit::quorvah::Instance& drive = toolkit::quorvah::instanceOf(report, "/dev/sr0");
    EXPECT_EQ(drive.get("MediaType"), "Optical");
    EXPECT_EQ(drive.get("Model"), "DVD-ROM DU90N");
    EXPECT_EQ(drive.get("InterfaceType"), "SATA");
    EXPECT_EQ(drive.get("BlockSize"), "2048");
}

TEST(StorageGroup, TellsAllOfAMemoryCardButNotItsBootArea) {
    expectOnly(kStorage, "arm64-board",
               {{"DeviceID", "/dev/mmcblk0"},
                {"Name", "mmcblk0"},
                {"Model", "SD32G"},
                {"SerialNumber", "0x12ab34cd"},
                {"Size", "31914983424"},
                {"BlockSize", "512"},
                {"NumberOfBlocks", "62333952"},
                {"MediaType", "Flash"},
                {"InterfaceType", "MMC"},
                {"PhysicalBlockSize", "512"},
                {"Removable", "false"},
                {"ReadOnly", "false"},
                {"Multipath", "false"}});
}

TEST(StorageGroup, TakesNoMediumNorMakerFromAVirtualDisk) {
    expectOnly(kStorage, "kvm-guest",
               {{"DeviceID", "/dev/vda"},
                {"Name", "vda"},
                {"SerialNumber", "6d3e8a5243ab4d83"},
                {"Size", "21474836480"},
                {"BlockSize", "512"},
                {"NumberOfBlocks", "41943040"},
                {"InterfaceType", "virtio"},
                {"PhysicalBlockSize", "512"},
                {"Removable", "false"},
                {"ReadOnly", "true"},
                {"BusAddress", "0000:00:04.0"},
                {"Multipath", "false"}});
}

TEST(StorageGroup, LeavesOutSizesThatCannotBe) {
    expectInstance(kStorage, "contradictory", "/dev/sdb",
                   {{"DeviceID", "/dev/sdb"}, {"Name", "sdb"}, {"Multipath", "false"}});
    expectInstance(kStorage, "contradictory", "/dev/sda",
                   {{"DeviceID", "/dev/sda"}, {"Name", "sda"}, {"Multipath", "false"}});
}

TEST(DiskPartitionGroup, TellsAllOfAGptPartition) {
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

TEST(DiskPartitionGroup, TellsWhatTheKernelKnowsWithoutUdev) {
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

TEST(DiskPartitionGroup, TellsPrimaryFromLogicalPartitionsOfAnMbr) {
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

TEST(DiskPartitionGroup, LeavesOutNumbersThatCannotBe) {
    expectOnly(kDiskPartition, "contradictory",
               {{"DeviceID", "/dev/sdb1"}, {"Size", "4096"}, {"DiskName", "/dev/sdb"}});
}
