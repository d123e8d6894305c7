#include <gtest/gtest.h>

#include "tests/toolkit/quorvah/Expectations.h"
#include "toolkit/quorvah/groups/GroupTable.h"

using toolkit::quorvah::expectInstance;
using toolkit::quorvah::expectOnly;
using toolkit::quorvah::gatherTree;
using toolkit::quorvah::instanceOf;
using toolkit::quorvah::keysOf;
using toolkit::quorvah::kPhysicalProcessor;
using toolkit::quorvah::kProcessor;
using toolkit::quorvah::Report;
using toolkit::quorvah::Values;

namespace {

const std::string kXeonFlags =
    "fpu;vme;de;pse;tsc;msr;pae;mce;cx8;apic;sep;mtrr;pge;mca;cmov;pat;pse36;clflush;lm;constant_tsc;avx2;"
    "sse4_2";

}  // namespace

TEST(ProcessorGroup, TellsAllOfAnX86Cpu) {
    expectInstance(kProcessor, "x86-server", "cpu5",
                   {{"DeviceID", "cpu5"},
                    {"Name", "Intel(R) Xeon(R) Gold 6130 CPU @ 2.10GHz"},
                    {"Manufacturer", "GenuineIntel"},
                    {"Family", "6"},
                    {"Model", "85"},
                    {"Stepping", "4"},
                    {"MaxClockSpeed", "3700"},
                    {"CurrentClockSpeed", "1005"},
                    {"AddressWidth", "64"},
                    {"EnabledState", "Enabled"},
                    {"Architecture", "x86_64"},
                    {"PhysicalPackageId", "0"},
                    {"DieId", "0"},
                    {"CoreId", "4"},
                    {"ThreadIndex", "1"},
                    {"NumaNode", "0"},
                    {"Flags", kXeonFlags},
                    {"Microcode", "0x2006b06"},
                    {"L1dCacheSize", "32"},
                    {"L1iCacheSize", "32"},
                    {"L2CacheSize", "1024"},
                    {"L3CacheSize", "22528"}});
}

TEST(ProcessorGroup, ListsAnOfflineCpuThatTellsNothingOfItself) {
    expectInstance(kProcessor, "x86-server", "cpu7",
                   {{"DeviceID", "cpu7"},
                    {"AddressWidth", "64"},
                    {"EnabledState", "Disabled"},
                    {"Architecture", "x86_64"},
                    {"NumaNode", "1"}});
}

TEST(ProcessorGroup, ListsPresentCpusInTheirOrderAndNotThosePossible) {
    EXPECT_EQ(keysOf(gatherTree(kProcessor, "x86-server")),
              (std::vector<std::string>{"cpu0", "cpu1", "cpu2", "cpu3", "cpu4", "cpu5", "cpu6", "cpu7"}));
}

TEST(ProcessorGroup, NamesArmCoresByTheirNumbers) {
    const Values common = {{"Manufacturer", "ARM"},
                           {"Family", "8"},
                           {"MaxClockSpeed", "1500"},
                           {"AddressWidth", "64"},
                           {"EnabledState", "Enabled"},
                           {"Architecture", "aarch64"},
                           {"ClusterId", "0"},
                           {"ThreadIndex", "0"},
                           {"Flags", "fp;asimd;evtstrm;crc32;cpuid"}};
    Values little = common;
    little.insert(little.end(), {{"DeviceID", "cpu1"},
                                 {"Name", "Cortex-A53"},
                                 {"Model", "d03"},
                                 {"Stepping", "r0p4"},
                                 {"CoreId", "1"}});
    expectInstance(kProcessor, "arm64-board", "cpu1", little);
    Values big = common;
    big.insert(big.end(), {{"DeviceID", "cpu3"},
                           {"Name", "Cortex-A72"},
                           {"Model", "d08"},
                           {"Stepping", "r0p3"},
                           {"CoreId", "3"}});
    expectInstance(kProcessor, "arm64-board", "cpu3", big);
}

TEST(ProcessorGroup, ReadsTheListOfAnS390x) {
    expectInstance(kProcessor, "s390x", "cpu1",
                   {{"DeviceID", "cpu1"},
                    {"Name", "IBM/S390 2964"},
                    {"Manufacturer", "IBM"},
                    {"Model", "2964"},
                    {"Stepping", "FF"},
                    {"MaxClockSpeed", "5208"},
                    {"CurrentClockSpeed", "5000"},
                    {"AddressWidth", "64"},
                    {"EnabledState", "Enabled"},
                    {"Architecture", "s390x"},
                    {"Flags", "esan3;zarch;stfle;msa;ldisp"}});
}

TEST(ProcessorGroup, ReadsTheListOfAPower9WithoutAnyOfSys) {
    expectInstance(kProcessor, "ppc64le", "cpu0",
                   {{"DeviceID", "cpu0"},
                    {"Name", "POWER9 (architected)"},
                    {"Manufacturer", "IBM"},
                    {"Model", "004e"},
                    {"Stepping", "2.2"},
                    {"MaxClockSpeed", "2901"},
                    {"CurrentClockSpeed", "2901"},
                    {"AddressWidth", "64"},
                    {"EnabledState", "Enabled"},
                    {"Architecture", "ppc64le"}});
}

TEST(ProcessorGroup, TellsTheKindsOfCoresApart) {
    const Report report = gatherTree(kProcessor, "hybrid");
    EXPECT_EQ(instanceOf(report, "cpu1").get("CoreType"), "performance");
    EXPECT_EQ(instanceOf(report, "cpu1").get("ThreadIndex"), "1");
    EXPECT_EQ(instanceOf(report, "cpu3").get("CoreType"), "efficiency");
    EXPECT_EQ(instanceOf(report, "cpu3").get("ClusterId"), "8");
}

TEST(ProcessorGroup, BelievesSysfsWhereFilesContradictEachOther) {
    EXPECT_EQ(keysOf(gatherTree(kProcessor, "contradictory")),
              (std::vector<std::string>{"cpu0", "cpu1", "cpu2"}));
    expectInstance(kProcessor, "contradictory", "cpu1",
                   {{"DeviceID", "cpu1"},
                    {"Name", "CPU 1"},
                    {"Manufacturer", "AuthenticAMD"},
                    {"EnabledState", "Disabled"}});
    expectInstance(kProcessor, "contradictory", "cpu2", {{"DeviceID", "cpu2"}, {"EnabledState", "Enabled"}});
}

TEST(PhysicalProcessorGroup, TellsAllOfASocket) {
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

TEST(PhysicalProcessorGroup, CountsNoOfflineThreadWhosePackageIsUnknown) {
    const Report report = gatherTree(kPhysicalProcessor, "x86-server");
    EXPECT_EQ(keysOf(report), (std::vector<std::string>{"package0", "package1"}));
    EXPECT_EQ(instanceOf(report, "package1").get("NumberOfLogicalProcessors"), "3");
    EXPECT_EQ(instanceOf(report, "package1").get("SocketDesignation"), "CPU2");
    EXPECT_EQ(instanceOf(report, "package1").get("SerialNumber"), "");
}

TEST(PhysicalProcessorGroup, KeepsPlaceholdersWhenAskedTo) {
    const Report report = gatherTree(kPhysicalProcessor, "x86-server", true);
    EXPECT_EQ(instanceOf(report, "package1").get("SerialNumber"), "Not Specified");
    EXPECT_EQ(instanceOf(report, "package1").get("AssetTag"), "UNKNOWN");
}

TEST(PhysicalProcessorGroup, TakesCpusWithoutPackageForOnePackageAndNamesAllItsKinds) {
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

TEST(PhysicalProcessorGroup, CountsCoresByTheirThreadsNotByTheirIds) {
    expectOnly(kPhysicalProcessor, "hybrid",
               {{"DeviceID", "package0"},
                {"NumberOfCores", "3"},
                {"NumberOfEnabledCores", "3"},
                {"NumberOfLogicalProcessors", "4"},
                {"ThreadsPerCore", "2"},
                {"Dies", "1"}});
}

TEST(PhysicalProcessorGroup, CountsNoCoreWithoutATopology) {
    expectOnly(kPhysicalProcessor, "contradictory",
               {{"DeviceID", "package0"},
                {"Name", "CPU 0;CPU 1"},
                {"Manufacturer", "AuthenticAMD"},
                {"NumberOfLogicalProcessors", "3"}});
}
