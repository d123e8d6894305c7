#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(ComponentID, ReadsTheFirmwareTextsWithoutPlaceholders) {
    expectOnly(kComponentID, "x86-server",
               {{"UUID", "4c4c4544-0036-4a10-8052-b4c04f4b4d32"},
                {"Manufacturer", "Example Servers, Inc."},
                {"ProductName", "ES-2630"},
                {"SerialNumber", "CZ3402ABCD"},
                {"SKUNumber", "SKU=0716"},
                {"Name", "db1.example.com"},
                {"MachineId", "8d3c1e0bd33e4c7e9a60f1b2c3d4e5f6"},
                {"BootId", "0b5b6a44-3a4b-4c2d-8d0e-1f2a3b4c5d6e"}});
}

TEST(ComponentID, KeepsPlaceholdersWhenAskedTo) {
    const GroupData data = gatheredTree(kComponentID, "x86-server", true);
    EXPECT_EQ(data.instances().front().get("Version"), "Default string");
    EXPECT_EQ(data.instances().front().get("Family"), "To be filled by O.E.M.");
}

TEST(ComponentID, ReadsADeviceTree) {
    expectOnly(kComponentID, "arm64-board",
               {{"ProductName", "Example Board Model 4 Rev 1.1"},
                {"SerialNumber", "10000000abcdef01"},
                {"Name", "board"}});
}

TEST(ComponentID, IdentifiersAreInLowerCase) {
    const ScratchDir tree;
    tree.write("sys/class/dmi/id/product_uuid", "4C4C4544-0036-4A10-8052-B4C04F4B4D32\n");
    const GroupData data = gatheredBelow(kComponentID, tree.path());
    ASSERT_EQ(data.instances().size(), 1U);
    EXPECT_EQ(data.instances().front().get("UUID"), "4c4c4544-0036-4a10-8052-b4c04f4b4d32");
}

TEST(ComponentID, AnImageThatHasNotStartedYetHasNoMachineId) {
    const ScratchDir tree;
    tree.write("etc/machine-id", "uninitialized\n");
    tree.write("etc/hostname", "image\n");
    const GroupData data = gatheredBelow(kComponentID, tree.path());
    ASSERT_EQ(data.instances().size(), 1U);
    EXPECT_EQ(data.instances().front().get("MachineId"), "");
}

TEST(ComponentID, ReadsTheDirectoryOfTheDeviceIfTheClassHasNoLink) {
    const ScratchDir tree;
    tree.write("sys/devices/virtual/dmi/id/sys_vendor", "Example Servers, Inc.\n");
    tree.write("sys/devices/virtual/dmi/id/product_name", "ES-2630\n");
    const GroupData data = gatheredBelow(kComponentID, tree.path());
    ASSERT_EQ(data.instances().size(), 1U);
    expectAll(kComponentID, data.instances().front(),
              {{"Manufacturer", "Example Servers, Inc."}, {"ProductName", "ES-2630"}});
}

// The structure type 1, whose header and fields have 27 bytes.
std::string systemTable() {
    std::string table("\x01\x1b\x01\0\x01\x02\x03\x04", 8);
    for (char byte = 0; byte < 16; ++byte) table += static_cast<char>(0x10 + byte);
    table += std::string("\x06\x05\x06", 3);
    table += std::string("Maker \0Product\0Default string\0S-1\0SKU-1\0Family-1\0\0", 50);
    return table;
}

TEST(ComponentID, ReadsTheTablesIfTheKernelDoesNotExportTheirTexts) {
    const ScratchDir tree;
    tree.write("sys/firmware/dmi/tables/DMI", systemTable());
    const GroupData data = gatheredBelow(kComponentID, tree.path());
    ASSERT_EQ(data.instances().size(), 1U);
    expectAll(kComponentID, data.instances().front(),
              {{"UUID", "13121110-1514-1716-1819-1a1b1c1d1e1f"},
               {"Manufacturer", "Maker"},
               {"ProductName", "Product"},
               {"SerialNumber", "S-1"},
               {"SKUNumber", "SKU-1"},
               {"Family", "Family-1"}});
}

TEST(ComponentID, TheIdentifierOfOldFirmwareIsBigEndian) {
    const ScratchDir tree;
    tree.write("sys/firmware/dmi/tables/DMI", systemTable());
    tree.write("sys/firmware/dmi/tables/smbios_entry_point", std::string("_SM_\0\x1f\x02\x04", 8));
    const GroupData data = gatheredBelow(kComponentID, tree.path());
    ASSERT_EQ(data.instances().size(), 1U);
    EXPECT_EQ(data.instances().front().get("UUID"), "10111213-1415-1617-1819-1a1b1c1d1e1f");
}

TEST(ComponentID, ReadsTheSerialNumberOfAPowerMachine) {
    const ScratchDir tree;
    tree.write("proc/device-tree/model", std::string("IBM,9105-22A\0", 13));
    tree.write("proc/device-tree/system-id", std::string("IBM,0278ABCDE\0", 14));
    GroupData data = gatheredBelow(kComponentID, tree.path());
    EXPECT_EQ("IBM,9105-22A", data.instances().front().get("ProductName"));
    EXPECT_EQ("IBM,0278ABCDE", data.instances().front().get("SerialNumber"));
    tree.write("proc/device-tree/system-id", std::string("8c0f4ee6-8b0a-4a3c-9d2b-7a2b5d1a0c11\0", 37));
    data = gatheredBelow(kComponentID, tree.path());
    EXPECT_EQ("", data.instances().front().get("SerialNumber"));
}

TEST(ComponentID, CompletesTheKernelsTextsFromTheTables) {
    const ScratchDir tree;
    tree.write("sys/firmware/dmi/tables/DMI", systemTable());
    tree.write("sys/class/dmi/id/product_name", "Exported\n");
    const GroupData data = gatheredBelow(kComponentID, tree.path());
    EXPECT_EQ("Exported", data.instances().front().get("ProductName"));
    EXPECT_EQ("SKU-1", data.instances().front().get("SKUNumber"));
}

TEST(ComponentID, ReadsTheDeviceTreeAtItsOtherPlace) {
    const ScratchDir tree;
    const std::string base = "sys/firmware/devicetree/base/";
    tree.write(base + "model", std::string("Raspberry Pi 4 Model B Rev 1.4\0", 31));
    tree.write(base + "compatible", std::string("raspberrypi,4-model-b\0brcm,bcm2711\0", 36));
    tree.write(base + "vm,uuid", std::string("8c0f4ee6-8b0a-4a3c-9d2b-7a2b5d1a0c11\0", 37));
    const GroupData data = gatheredBelow(kComponentID, tree.path());
    ASSERT_EQ(data.instances().size(), 1U);
    expectAll(kComponentID, data.instances().front(),
              {{"UUID", "8c0f4ee6-8b0a-4a3c-9d2b-7a2b5d1a0c11"},
               {"Manufacturer", "Raspberry Pi"},
               {"ProductName", "Raspberry Pi 4 Model B Rev 1.4"}});
}

TEST(ComponentID, ReadsWhatCpuinfoTellsOfTheMachine) {
    const ScratchDir board;
    board.write("proc/cpuinfo",
                "processor\t: 0\nCPU architecture: 7\n\nHardware\t: BCM2835\nRevision\t: a22082\n"
                "Serial\t\t: 00000000c7d3c5a1\nModel\t\t: Raspberry Pi 3 Model B Rev 1.2\n");
    expectAll(kComponentID, gatheredBelow(kComponentID, board.path()).instances().front(),
              {{"ProductName", "Raspberry Pi 3 Model B Rev 1.2"}, {"SerialNumber", "00000000c7d3c5a1"}});
    const ScratchDir power;
    power.write("proc/cpuinfo",
                "processor\t: 0\ncpu\t\t: POWER9 (architected)\nrevision\t: 2.2 (pvr 004e 1202)\n\n"
                "timebase\t: 512000000\nplatform\t: pSeries\nmodel\t\t: IBM,9009-42A\n");
    expectAll(kComponentID, gatheredBelow(kComponentID, power.path()).instances().front(),
              {{"Manufacturer", "IBM"}, {"ProductName", "IBM,9009-42A"}});
    const ScratchDir x86;
    x86.write("proc/cpuinfo", "processor\t: 0\nvendor_id\t: GenuineIntel\nmodel\t\t: 85\n");
    EXPECT_TRUE(gatheredBelow(kComponentID, x86.path()).instances().empty());
}

TEST(ComponentID, ReadsTheSysinfoOfAnS390x) {
    expectOnly(kComponentID, "s390x",
               {{"Manufacturer", "IBM"},
                {"ProductName", "2964"},
                {"Version", "701"},
                {"SerialNumber", "00000000000A1B2C"}});
}

TEST(ComponentIDLive, MatchesTheFilesOfTheSystem) {
    const GroupData data = gatheredLive(kComponentID);
    ASSERT_EQ(data.instances().size(), 1U);
    EXPECT_EQ(data.instances().front().get("Name"), lineOf("uname -n"));
    EXPECT_EQ(data.instances().front().get("MachineId"), lineOf("cat /etc/machine-id 2>/dev/null || true"));
    EXPECT_EQ(data.instances().front().get("BootId"), lineOf("cat /proc/sys/kernel/random/boot_id"));
}

}  // namespace
}  // namespace toolkit::quorvah
