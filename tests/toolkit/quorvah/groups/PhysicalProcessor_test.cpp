#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(PhysicalProcessor, ReportsASocket) {
    expectInstance(kPhysicalProcessor, "x86-server", "package0",
                   {{"DeviceID", "package0"},
                    {"Name", "Intel(R) Xeon(R) Gold 6130 CPU @ 2.10GHz"},
                    {"Manufacturer", "GenuineIntel"},
                    {"Family", "6"},
                    {"SocketDesignation", "CPU1"},
                    {"Upgrade", "Socket LGA3647-1"},
                    {"NumberOfCores", "2"},
                    {"NumberOfEnabledCores", "2"},
                    {"NumberOfLogicalProcessors", "4"},
                    {"MaxClockSpeed", "3700"},
                    {"ExternalClock", "100"},
                    {"Voltage", "1800"},
                    {"ProcessorID", "bfebfbff00050654"},
                    {"SerialNumber", "S1"},
                    {"PartNumber", "CPU-PART-1"},
                    {"ThreadsPerCore", "2"},
                    {"Dies", "1"},
                    {"NumaNodes", "1"},
                    {"L2CacheSize", "2048"},
                    {"L3CacheSize", "22528"},
                    {"Microcode", "0x2006b06"}});
}

TEST(PhysicalProcessor, CountsAnOfflineThreadInThePackageOfItsNode) {
    const GroupData data = gatheredTree(kPhysicalProcessor, "x86-server");
    EXPECT_EQ(keysOf(data), (std::vector<std::string>{"package0", "package1"}));
    EXPECT_EQ(instanceOf(data, "package1").get("NumberOfLogicalProcessors"), "4");
    EXPECT_EQ(instanceOf(data, "package1").get("SocketDesignation"), "CPU2");
    EXPECT_EQ(instanceOf(data, "package1").get("SerialNumber"), "");
}

TEST(PhysicalProcessor, KeepsPlaceholdersWhenAskedTo) {
    const GroupData data = gatheredTree(kPhysicalProcessor, "x86-server", true);
    EXPECT_EQ(instanceOf(data, "package1").get("SerialNumber"), "Not Specified");
    EXPECT_EQ(instanceOf(data, "package1").get("AssetTag"), "UNKNOWN");
}

TEST(PhysicalProcessor, AssignsCpusWithoutPackageToOnePackageWithAllNames) {
    expectOnly(kPhysicalProcessor, "arm64-board",
               {{"DeviceID", "package0"},
                {"Name", "Cortex-A53;Cortex-A72"},
                {"Manufacturer", "ARM"},
                {"Family", "8"},
                {"NumberOfCores", "4"},
                {"NumberOfEnabledCores", "4"},
                {"NumberOfLogicalProcessors", "4"},
                {"MaxClockSpeed", "1500"},
                {"ThreadsPerCore", "1"}});
}

TEST(PhysicalProcessor, CountsCoresByTheirThreads) {
    expectOnly(kPhysicalProcessor, "hybrid",
               {{"DeviceID", "package0"},
                {"NumberOfCores", "3"},
                {"NumberOfEnabledCores", "3"},
                {"NumberOfLogicalProcessors", "4"},
                {"ThreadsPerCore", "2"},
                {"Dies", "1"}});
}

TEST(PhysicalProcessor, CountsNoCoresWithoutTopology) {
    expectOnly(kPhysicalProcessor, "contradictory",
               {{"DeviceID", "package0"},
                {"Name", "CPU 0;CPU 1"},
                {"Manufacturer", "AuthenticAMD"},
                {"NumberOfLogicalProcessors", "3"}});
}

}  // namespace
}  // namespace toolkit::quorvah
