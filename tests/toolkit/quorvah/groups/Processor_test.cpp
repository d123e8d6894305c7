#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>

#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {
namespace {

const std::string kXeonFlags =
    "fpu;vme;de;pse;tsc;msr;pae;mce;cx8;apic;sep;mtrr;pge;mca;cmov;pat;pse36;clflush;lm;constant_tsc;avx2;"
    "sse4_2";

TEST(Processor, ReportsAnX86Cpu) {
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

TEST(Processor, ListsAnOfflineCpu) {
    expectInstance(kProcessor, "x86-server", "cpu7",
                   {{"DeviceID", "cpu7"},
                    {"AddressWidth", "64"},
                    {"EnabledState", "Disabled"},
                    {"Architecture", "x86_64"},
                    {"NumaNode", "1"}});
}

TEST(Processor, ListsPresentCpusInOrder) {
    EXPECT_EQ(keysOf(gatheredTree(kProcessor, "x86-server")),
              (std::vector<std::string>{"cpu0", "cpu1", "cpu2", "cpu3", "cpu4", "cpu5", "cpu6", "cpu7"}));
}

TEST(Processor, NamesArmCoresByTheirIds) {
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

TEST(Processor, ReadsTheListOfAnS390x) {
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
                    {"L1dCacheSize", "128"},
                    {"Flags", "esan3;zarch;stfle;msa;ldisp"}});
}

TEST(Processor, ReadsTheListOfAPower9WithoutSysfs) {
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

TEST(Processor, DistinguishesTheKindsOfCores) {
    const GroupData data = gatheredTree(kProcessor, "hybrid");
    EXPECT_EQ(instanceOf(data, "cpu1").get("CoreType"), "performance");
    EXPECT_EQ(instanceOf(data, "cpu1").get("ThreadIndex"), "1");
    EXPECT_EQ(instanceOf(data, "cpu3").get("CoreType"), "efficiency");
    EXPECT_EQ(instanceOf(data, "cpu3").get("ClusterId"), "8");
}

TEST(Processor, PrefersSysfsIfFilesContradictEachOther) {
    EXPECT_EQ(keysOf(gatheredTree(kProcessor, "contradictory")),
              (std::vector<std::string>{"cpu0", "cpu1", "cpu2"}));
    expectInstance(kProcessor, "contradictory", "cpu1",
                   {{"DeviceID", "cpu1"},
                    {"Name", "CPU 1"},
                    {"Manufacturer", "AuthenticAMD"},
                    {"EnabledState", "Disabled"}});
    expectInstance(kProcessor, "contradictory", "cpu2", {{"DeviceID", "cpu2"}, {"EnabledState", "Enabled"}});
}

std::size_t countDistinct(const GroupData& data, const std::string& field) {
    std::set<std::string> values;
    for (const Instance& instance : data.instances()) values.insert(instance.get(field));
    return values.size();
}

TEST(ProcessorLive, MatchLscpu) {
    const std::map<std::string, std::string> fields = lscpuFields();
    const GroupData data = gatheredLive(kProcessor);
    ASSERT_FALSE(data.instances().empty());
    EXPECT_EQ(std::to_string(data.instances().size()), fields.at("CPU(s)"));
    std::string flags = data.instances().front().get("Flags");
    std::ranges::replace(flags, ';', ' ');
    const std::pair<const char*, const char*> names[] = {
        {"Name", "Model name"}, {"Manufacturer", "Vendor ID"}, {"Family", "CPU family"},
        {"Model", "Model"},     {"Stepping", "Stepping"},      {"Architecture", "Architecture"},
    };
    for (const auto& [ours, theirs] : names) {
        if (!fields.contains(theirs)) continue;
        EXPECT_EQ(data.instances().front().get(ours), fields.at(theirs)) << ours;
    }
    EXPECT_EQ(flags, fields.at("Flags"));
    if (fields.contains("CPU op-mode(s)")) {
        const Rows modes = fieldsOf(fields.at("CPU op-mode(s)"), ' ');  // "32-bit, 64-bit"
        EXPECT_EQ(data.instances().front().get("AddressWidth") + "-bit", modes.back());
    }
    if (fields.contains("NUMA node(s)")) {
        const GroupData memory = gatheredLive(kMemory);
        EXPECT_EQ(memory.instances().front().get("NumaNodes"), fields.at("NUMA node(s)"));
    }
    if (fields.contains("Core(s) per socket")) {
        const GroupData packages = gatheredLive(kPhysicalProcessor);
        for (const Instance& package : packages.instances())
            EXPECT_EQ(package.get("NumberOfEnabledCores"), fields.at("Core(s) per socket"));
    }
}

// "2600.0000" MHz, or nothing that is known.
std::string wholeMegahertz(const std::string& value) {
    return value.find_first_of("0123456789") == std::string::npos ? std::string()
                                                                  : value.substr(0, value.find('.'));
}

TEST(ProcessorLive, HaveTheClocksOfLscpu) {
    const GroupData data = gatheredLive(kProcessor);
    for (const std::string& line : linesOf("LC_ALL=C lscpu -a -p=CPU,MAXMHZ")) {
        if (line.starts_with('#')) continue;
        const Rows row = fieldsOf(line, ',');
        const std::string theirs = wholeMegahertz(row[1]);
        if (!theirs.empty()) {
            EXPECT_EQ(instanceOf(data, "cpu" + row[0]).get("MaxClockSpeed"), theirs);
        }
    }
}

// The numbers differ where the kernel repeats them, but not which processors share a core.
TEST(ProcessorLive, ShareCoresAsLscpuSays) {
    const GroupData data = gatheredLive(kProcessor);
    std::map<std::string, std::string> coreOfTheirs;
    std::map<std::string, std::string> coreOfOurs;
    for (const std::string& line : linesOf("LC_ALL=C lscpu -p=CPU,CORE,SOCKET")) {
        if (line.starts_with('#')) continue;
        const Rows row = fieldsOf(line, ',');
        const Instance& cpu = instanceOf(data, "cpu" + row[0]);
        const std::string theirs = row[2] + "/" + row[1];
        const std::string ours =
            cpu.get("PhysicalPackageId") + "/" + cpu.get("DieId") + "/" + cpu.get("CoreId");
        EXPECT_EQ(coreOfTheirs.try_emplace(theirs, ours).first->second, ours) << line;
        EXPECT_EQ(coreOfOurs.try_emplace(ours, theirs).first->second, theirs) << line;
    }
    EXPECT_FALSE(coreOfTheirs.empty());
}

TEST(ProcessorLive, HaveTheTopologyOfLscpu) {
    std::size_t rows = 0;
    const GroupData data = gatheredLive(kProcessor);
    std::map<std::string, std::set<std::string>> coresOfSockets;
    for (const std::string& line : linesOf("LC_ALL=C lscpu -a -p=CPU,CORE,SOCKET,NODE,ONLINE")) {
        if (line.starts_with('#')) continue;
        const Rows row = fieldsOf(line, ',');
        const Instance& cpu = instanceOf(data, "cpu" + row[0]);
        EXPECT_EQ(cpu.get("NumaNode"), row[3]);
        EXPECT_EQ(cpu.get("EnabledState"), row[4] == "Y" ? "Enabled" : "Disabled");
        if (row[4] == "Y") coresOfSockets[row[2]].insert(row[1]);
        ++rows;
    }
    EXPECT_EQ(rows, data.instances().size());
    const GroupData packages = gatheredLive(kPhysicalProcessor);
    EXPECT_EQ(packages.instances().size(), coresOfSockets.size());
    std::multiset<std::string> ours;
    std::multiset<std::string> theirs;
    for (const Instance& package : packages.instances()) ours.insert(package.get("NumberOfEnabledCores"));
    for (const auto& [socket, cores] : coresOfSockets) theirs.insert(std::to_string(cores.size()));
    EXPECT_EQ(ours, theirs);
}

TEST(ProcessorLive, HaveTheCachesOfLscpu) {
    const GroupData processors = gatheredLive(kProcessor);
    const GroupData packages = gatheredLive(kPhysicalProcessor);
    std::map<std::string, std::uint64_t> totals;
    for (const Instance& package : packages.instances()) {
        for (const char* const field : {"L2CacheSize", "L3CacheSize"}) {
            totals[field] += readLeadingCount(package.get(field)).value_or(0);
        }
    }
    std::size_t compared = 0;
    for (const std::string& line : linesOf("LC_ALL=C lscpu -B -C=NAME,ONE-SIZE,ALL-SIZE")) {
        const std::vector<std::string> row = wordsOf(line);
        if (row.size() != 3 || row[0] == "NAME") continue;
        const std::string field = row[0] + "CacheSize";
        if (field == "L4CacheSize") continue;
        EXPECT_EQ(std::stoll(processors.instances().front().get(field)) * 1024, std::stoll(row[1])) << field;
        if (totals.contains(field)) {
            EXPECT_EQ(totals[field] * 1024, std::stoull(row[2])) << field;
        }
        ++compared;
    }
    const bool anyCache = !processors.instances().front().get("L1dCacheSize").empty();
    EXPECT_EQ(compared > 0, anyCache);
}

TEST(ProcessorLive, ThreadsOfACoreAreNumberedFromZero) {
    const GroupData data = gatheredLive(kProcessor);
    const std::string threads = gatheredLive(kPhysicalProcessor).instances().front().get("ThreadsPerCore");
    EXPECT_EQ(std::to_string(countDistinct(data, "ThreadIndex")), threads);
    EXPECT_EQ(lscpuFields().at("Thread(s) per core"), threads);
}

}  // namespace
}  // namespace toolkit::quorvah
