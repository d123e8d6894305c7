#include <gtest/gtest.h>

#include <map>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(Memory, CombinesKernelAndFirmware) {
    expectOnly(kMemory, "x86-server",
               {{"DeviceID", "memory"},
                {"TotalVisibleMemorySize", "65689512"},
                {"FreePhysicalMemory", "41203340"},
                {"TotalVirtualMemorySize", "74078116"},
                {"FreeVirtualMemory", "49591940"},
                {"TotalSwapSpaceSize", "8388604"},
                {"MaximumCapacity", "805306368"},
                {"NumberOfMemoryDevices", "24"},
                {"InstalledMemory", "67108864"},
                {"MemAvailable", "58123456"},
                {"NumaNodes", "2"},
                {"HugePageSize", "2048"},
                {"HugePagesTotal", "16"},
                {"ErrorCorrection", "Multi-bit ECC"}});
}

TEST(Memory, CountsOnlineBlocksWithoutFirmware) {
    const ScratchDir tree;
    tree.write("sys/devices/system/memory/block_size_bytes", "8000000\n");
    tree.write("sys/devices/system/memory/memory0/state", "online\n");
    tree.write("sys/devices/system/memory/memory1/state", "offline\n");
    tree.write("sys/devices/system/memory/memory32/state", "online\n");
    const GroupData data = gatheredBelow(kMemory, tree.path());
    ASSERT_EQ(data.instances().size(), 1U);
    EXPECT_EQ(data.instances().front().get("InstalledMemory"), "262144");
}

// A tree with `blocks` memory blocks of 128 MiB that are online.
ScratchDir& withBlocks(ScratchDir& tree, int blocks) {
    tree.write("sys/devices/system/memory/block_size_bytes", "8000000\n");
    for (int block = 0; block < blocks; ++block)
        tree.write("sys/devices/system/memory/memory" + std::to_string(block) + "/state", "online\n");
    return tree;
}

std::string installedIn(const ScratchDir& tree) {
    const GroupData data = gatheredBelow(kMemory, tree.path());
    return data.instances().empty() ? "none" : data.instances().front().get("InstalledMemory");
}

TEST(InstalledMemory, IsTheRoundestNumberBetweenWhatIsUsedAndTheBlocks) {
    ScratchDir tree;
    withBlocks(tree, 17);  // the last one is there only in part
    tree.write("proc/meminfo", "MemTotal:        2030440 kB\n");
    EXPECT_EQ(installedIn(tree), "2097152");
}

TEST(InstalledMemory, IncludesWhatABalloonHasTaken) {
    ScratchDir tree;
    withBlocks(tree, 8);
    tree.write("proc/meminfo", "MemTotal:        400000 kB\n");
    tree.write("proc/zoneinfo", "Node 0, zone    DMA32\n        present  262000\n        managed  100000\n");
    EXPECT_EQ(installedIn(tree), "1048576");
}

void addRange(const ScratchDir& tree, int number, const char* first, const char* last, const char* type) {
    const std::string directory = "sys/firmware/memmap/" + std::to_string(number) + "/";
    tree.write(directory + "start", std::string(first) + "\n");
    tree.write(directory + "end", std::string(last) + "\n");
    tree.write(directory + "type", std::string(type) + "\n");
}

TEST(InstalledMemory, IsWhatTheMapOfAddressesShowsIfTheKernelFoundIt) {
    ScratchDir tree;
    withBlocks(tree, 3);
    tree.write("proc/meminfo", "MemTotal:        300000 kB\n");
    // 320 MiB without the hole below 1 MiB and what the firmware keeps at the end.
    tree.write("proc/zoneinfo", "Node 0, zone    DMA32\n        present  81790\n        managed  75000\n");
    addRange(tree, 0, "0x0", "0x9fbff", "System RAM");
    addRange(tree, 1, "0x100000", "0x13fdffff", "System RAM");
    addRange(tree, 2, "0x13fe0000", "0x13ffffff", "Reserved");
    addRange(tree, 3, "0xfeffc000", "0xfeffffff", "Reserved");
    EXPECT_EQ(installedIn(tree), "327680");
    addRange(tree, 4, "0x100000000", "0x10fffffff", "System RAM");  // 256 MiB, which are not online
    EXPECT_EQ(installedIn(tree), "393216");
}

TEST(InstalledMemory, IsWhatTheDeviceTreeOfAVirtualBoardShows) {
    ScratchDir tree;
    withBlocks(tree, 6);
    tree.write("proc/meminfo", "MemTotal:        660000 kB\n");
    tree.write("proc/zoneinfo", "Node 0, zone    DMA\n        present  180224\n        managed  165000\n");
    tree.write("proc/device-tree/#address-cells", std::string("\0\0\0\2", 4));
    tree.write("proc/device-tree/#size-cells", std::string("\0\0\0\2", 4));
    // 704 MiB.
    tree.write("proc/device-tree/memory@40000000/reg",
               std::string("\0\0\0\0\x40\0\0\0\0\0\0\0\x2c\0\0\0", 16));
    EXPECT_EQ(installedIn(tree), "786432") << "the firmware of a real board may keep some";
    tree.write("proc/device-tree/compatible", "linux,dummy-virt");
    EXPECT_EQ(installedIn(tree), "720896");
}

// A structure type 17 with a module of 1 GiB.
const std::string kModule =
    std::string("\x11\x1c\x11\0\0\0\xfe\xff\x40\0\x40\0\0\x04", 14) + std::string(16, '\0');

TEST(InstalledMemory, IsWhatTheFirmwareTellsUnlessMemoryWasAdded) {
    ScratchDir tree;
    withBlocks(tree, 8);
    tree.write("sys/firmware/dmi/tables/DMI", kModule);
    tree.write("proc/meminfo", "MemTotal:        1000000 kB\n");
    EXPECT_EQ(installedIn(tree), "1048576");
    withBlocks(tree, 12);
    tree.write("proc/meminfo", "MemTotal:        1520000 kB\n");
    EXPECT_EQ(installedIn(tree), "1572864");
    withBlocks(tree, 4);  // memory was taken offline
    tree.write("proc/meminfo", "MemTotal:        500000 kB\n");
    EXPECT_EQ(installedIn(tree), "1048576");
}

TEST(Memory, CountsTheDirectoriesOfNodesWithoutAList) {
    const ScratchDir tree;
    tree.write("proc/meminfo", "MemTotal:        400000 kB\n");
    for (const char* const node : {"node0", "node1", "node17", "nodes"})
        tree.write("sys/devices/system/node/" + std::string(node) + "/cpumap", "1\n");
    EXPECT_EQ(gatheredBelow(kMemory, tree.path()).instances().front().get("NumaNodes"), "3");
}

TEST(Memory, OmitsInvalidNumbers) {
    expectOnly(kMemory, "contradictory", {{"DeviceID", "memory"}, {"TotalSwapSpaceSize", "100"}});
}

TEST(MemoryLive, MatchesFree) {
    const GroupData data = gatheredLive(kMemory);
    ASSERT_EQ(data.instances().size(), 1U);
    const Instance& memory = data.instances().front();
    std::map<std::string, Rows> rows;
    for (const std::string& line : linesOf("LC_ALL=C free -k")) {
        const Rows words = wordsOf(line);
        rows[words[0]] = words;
    }
    EXPECT_EQ(memory.get("TotalVisibleMemorySize"), rows["Mem:"][1]);
    EXPECT_EQ(memory.get("TotalSwapSpaceSize"), rows["Swap:"][1]);
    EXPECT_GE(std::stoll(memory.get("InstalledMemory")), std::stoll(rows["Mem:"][1]));
    EXPECT_LE(std::stoll(memory.get("FreePhysicalMemory")), std::stoll(rows["Mem:"][1]));
}

}  // namespace
}  // namespace toolkit::quorvah
