// Numbers that are too large, negative or otherwise invalid.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/quorvah/sources/SmbiosMemory.h"

namespace toolkit::quorvah {
namespace {

const Instance& only(const GroupData& data) {
    EXPECT_EQ(1U, data.instances().size());
    return data.instances().front();
}

std::string meminfo(const std::string& total, const std::string& swap) {
    return "MemTotal: " + total + " kB\nMemFree: " + total + " kB\nSwapTotal: " + swap +
           " kB\nSwapFree: " + swap + " kB\n";
}

TEST(HostileNumbers, AnOverflowingSumIsUnknown) {
    const zavtest::ScratchDir tree;
    tree.write("proc/meminfo", meminfo("9223372036854775807", "1"));
    const GroupData data = gatheredBelow(kMemory, tree.path());
    EXPECT_EQ("9223372036854775807", only(data).get("TotalVisibleMemorySize"));
    EXPECT_EQ("1", only(data).get("TotalSwapSpaceSize"));
    EXPECT_EQ("", only(data).get("TotalVirtualMemorySize"));
    EXPECT_EQ("", only(data).get("FreeVirtualMemory"));
}

TEST(HostileNumbers, AnythingButAPlainNumberIsUnknown) {
    for (const char* const wrong :
         {"-5", "+5", "0x5", "18446744073709551615", "5x", "99999999999999999999"}) {
        const zavtest::ScratchDir tree;
        tree.write("proc/meminfo", meminfo(wrong, "1"));
        tree.write("sys/block/sda/size", std::string(wrong) + "\n");
        tree.write("sys/block/sda/queue/logical_block_size", std::string(wrong) + "\n");
        tree.write("sys/block/sda/sda1/partition", std::string(wrong) + "\n");
        tree.write("sys/block/sda/sda1/start", std::string(wrong) + "\n");
        tree.write("sys/class/net/eth0/mtu", std::string(wrong) + "\n");
        tree.write("sys/class/net/eth0/speed", std::string(wrong) + "\n");
        tree.write("proc/uptime", std::string(wrong) + " 1.0\n");
        tree.write("proc/loadavg", std::string(wrong) + " 0.10 0.20 1/2 3\n");
        tree.write("proc/stat", "btime " + std::string(wrong) + "\n");
        tree.write("proc/sys/kernel/pid_max", std::string(wrong) + "\n");
        tree.write("etc/os-release", "ID=x\n");
        tree.write("var/lib/dpkg/status", "Package: a\nStatus: install ok installed\nInstalled-Size: " +
                                              std::string(wrong) + "\n\n");
        tree.write("lib/apk/db/installed", "P:b\nV:1\nI:" + std::string(wrong) + "\n\n");
        tree.write("var/lib/pacman/local/c/desc", "%NAME%\nc\n\n%SIZE%\n" + std::string(wrong) +
                                                      "\n\n%INSTALLDATE%\n" + std::string(wrong) + "\n");
        const std::pair<const Group*, std::vector<const char*>> unknown[] = {
            {&kMemory, {"TotalVisibleMemorySize", "TotalVirtualMemorySize", "FreePhysicalMemory"}},
            {&kStorage, {"Size", "BlockSize", "NumberOfBlocks"}},
            {&kDiskPartition, {"PartitionNumber", "StartingOffset", "BlockSize"}},
            {&kNetworkAdapter, {"ActiveMaximumTransmissionUnit", "Speed"}},
            {&kUNIXSystemParams, {"Uptime", "LoadAverage1"}},
            {&kOperatingSystem, {"LastBootUpTime", "MaxNumberOfProcesses", "LocalDateTime"}},
            {&kSoftwarePackages, {"InstalledSize", "InstallDate"}},
        };
        for (const auto& [group, fields] : unknown) {
            const GroupData data = gatheredBelow(*group, tree.path());
            EXPECT_FALSE(data.instances().empty()) << group->xmlName;
            for (const Instance& instance : data.instances()) {
                for (const char* const field : fields)
                    EXPECT_EQ("", instance.get(field)) << group->xmlName << field << wrong;
            }
        }
    }
}

TEST(HostileNumbers, OverflowingSizesAreUnknown) {
    const zavtest::ScratchDir tree;
    tree.write("sys/block/sda/size", "9223372036854775807\n");
    tree.write("sys/block/sda/sda1/partition", "9223372036854775807\n");
    tree.write("sys/block/sda/sda1/size", "36028797018963968\n");  // 2^63 bytes
    tree.write("sys/devices/system/memory/block_size_bytes", "7fffffffffffffff\n");
    for (int i = 0; i < 2000; ++i)
        tree.write("sys/devices/system/memory/memory" + std::to_string(i) + "/state", "online\n");
    tree.write("proc/meminfo", "MemTotal: 1 kB\n");
    EXPECT_EQ("", only(gatheredBelow(kStorage, tree.path())).get("Size"));
    EXPECT_EQ("", only(gatheredBelow(kDiskPartition, tree.path())).get("Size"));
    EXPECT_EQ("", only(gatheredBelow(kMemory, tree.path())).get("InstalledMemory"));
}

TEST(HostileNumbers, OverflowingCacheSizesAreUnknown) {
    const zavtest::ScratchDir tree;
    tree.write("sys/devices/system/cpu/present", "0-1\n");
    for (const char* const cpu : {"cpu0", "cpu1"}) {
        const std::string index = "sys/devices/system/cpu/" + std::string(cpu) + "/cache/index2/";
        tree.write(index + "level", "2\n");
        tree.write(index + "type", "Unified\n");
        tree.write(index + "size", "9223372036854775807K\n");
        tree.write(index + "shared_cpu_list", std::string(cpu).substr(3) + "\n");
    }
    tree.write("proc/cpuinfo", "processor: 0\ncpu MHz: 9223372036854775807.9\n\nprocessor: 1\n");
    EXPECT_EQ("", only(gatheredBelow(kPhysicalProcessor, tree.path())).get("L2CacheSize"));
    EXPECT_EQ("", gatheredBelow(kProcessor, tree.path()).instances().front().get("CurrentClockSpeed"));
}

TEST(HostileNumbers, AnOverflowingMemoryCapacityIsUnknown) {
    // The capacity of each array is 2^54 - 1 KiB.
    std::string array = {16, 23, 0, 0, 3, 3, 0, '\x00', '\x00', '\x00', '\x80', 0, 0, '\xff', '\xff'};
    array += std::string(8, '\xff');
    array += std::string(2, '\0');
    std::string table;
    for (int i = 0; i < 600; ++i) table += array;
    const SmbiosMemory memory = readSmbiosMemory(Smbios(table));
    EXPECT_EQ(std::nullopt, memory.maximumCapacity);
    EXPECT_EQ(600U * 65535, memory.devices);
}

}  // namespace
}  // namespace toolkit::quorvah
