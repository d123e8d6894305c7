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
