#include <gtest/gtest.h>

#include <map>
#include <set>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(Storage, ListsPhysicalDrivesOnly) {
    EXPECT_EQ(keysOf(gatheredTree(kStorage, "x86-server")),
              (std::vector<std::string>{"/dev/nvme0n1", "/dev/sda", "/dev/sdb", "/dev/sdc", "/dev/sr0"}));
}

TEST(Storage, ReportsASataDisk) {
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

TEST(Storage, ReportsOnePathToASasDisk) {
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

TEST(Storage, ReportsAnNvmeDisk) {
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

TEST(Storage, ReportsAUsbFlashDriveThatClaimsToRotate) {
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

TEST(Storage, ReportsAnOpticalDrive) {
    const GroupData data = gatheredTree(kStorage, "x86-server");
    const Instance& drive = instanceOf(data, "/dev/sr0");
    EXPECT_EQ(drive.get("MediaType"), "Optical");
    EXPECT_EQ(drive.get("Model"), "DVD-ROM DU90N");
    EXPECT_EQ(drive.get("InterfaceType"), "SATA");
    EXPECT_EQ(drive.get("BlockSize"), "2048");
}

TEST(Storage, ReportsAMemoryCardWithoutItsBootArea) {
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

TEST(Storage, ReportsNoMediumOrMakerOfAVirtualDisk) {
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

TEST(Storage, OmitsImpossibleSizes) {
    expectInstance(kStorage, "contradictory", "/dev/sdb",
                   {{"DeviceID", "/dev/sdb"}, {"Name", "sdb"}, {"Multipath", "false"}});
    expectInstance(kStorage, "contradictory", "/dev/sda",
                   {{"DeviceID", "/dev/sda"}, {"Name", "sda"}, {"Multipath", "false"}});
}

// Whether a block device is not a drive.
bool isMadeUp(const std::string& name) {
    const char* const prefixes[] = {"loop", "ram", "zram", "dm-", "md", "nbd", "fd"};
    return std::ranges::any_of(prefixes, [&name](const char* prefix) { return name.starts_with(prefix); });
}

TEST(StorageLive, MatchesLsblk) {
    const GroupData data = gatheredLive(kStorage);
    std::set<std::string> theirs;
    for (const std::string& line :
         linesOf("LC_ALL=C lsblk -b -d -P -o NAME,SIZE,RO,RM,PHY-SEC,LOG-SEC,TYPE")) {
        std::map<std::string, std::string> row = pairsOf(line);
        if (isMadeUp(row["NAME"]) || (row["TYPE"] != "disk" && row["TYPE"] != "rom")) continue;
        const Instance& disk = instanceOf(data, "/dev/" + row["NAME"]);
        EXPECT_EQ(disk.get("Size"), row["SIZE"]);
        EXPECT_EQ(disk.get("BlockSize"), row["LOG-SEC"]);
        EXPECT_EQ(disk.get("PhysicalBlockSize"), row["PHY-SEC"]);
        EXPECT_EQ(disk.get("ReadOnly"), row["RO"] == "1" ? "true" : "false");
        EXPECT_EQ(disk.get("Removable"), row["RM"] == "1" ? "true" : "false");
        theirs.insert("/dev/" + row["NAME"]);
    }
    const Rows keys = keysOf(data);
    EXPECT_EQ(std::set<std::string>(keys.begin(), keys.end()), theirs);
}

}  // namespace
}  // namespace toolkit::quorvah
