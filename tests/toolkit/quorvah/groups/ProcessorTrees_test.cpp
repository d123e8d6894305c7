// Processors of machines whose kernels describe them in other ways: masks in place of lists, cpuinfo without numbered
// blocks, processors that are offline. Each tree is made of the files that matter, as those kernels write them.
#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

class CpuTree {
  public:
    void cpuFile(int cpu, const std::string& file, const std::string& text) const {
        tree_.write("sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/" + file, text + "\n");
    }
    void file(const std::string& name, const std::string& text) const { tree_.write(name, text + "\n"); }
    void bytes(const std::string& name, const std::string& content) const { tree_.write(name, content); }
    void cpusFile(const std::string& name, const std::string& text) const {
        file("sys/devices/system/cpu/" + name, text);
    }

    // A CPU that is online, with the ids of its package and core and the list of the threads of its core.
    void topology(int cpu, int package, int core, const std::string& threads) const {
        cpuFile(cpu, "topology/physical_package_id", std::to_string(package));
        cpuFile(cpu, "topology/core_id", std::to_string(core));
        cpuFile(cpu, "topology/thread_siblings_list", threads);
    }
    void cache(int cpu, int index, int level, const std::string& type, const std::string& size,
               const std::string& map) const {
        const std::string folder = "cache/index" + std::to_string(index) + "/";
        cpuFile(cpu, folder + "level", std::to_string(level));
        cpuFile(cpu, folder + "type", type);
        cpuFile(cpu, folder + "size", size);
        if (!map.empty()) cpuFile(cpu, folder + "shared_cpu_map", map);
    }

    GroupData processors() const { return gatheredBelow(kProcessor, tree_.path()); }
    GroupData packages() const { return gatheredBelow(kPhysicalProcessor, tree_.path()); }
    // The values of one package, separated by blanks; "-" for an unknown one. Cores, enabled cores, logical processors and
    // threads per core.
    std::string counts(const std::string& package) const {
        const GroupData data = packages();
        const Instance& instance = instanceOf(data, package);
        std::string text;
        for (const char* const field :
             {"NumberOfCores", "NumberOfEnabledCores", "NumberOfLogicalProcessors", "ThreadsPerCore"}) {
            const std::string value = instance.get(field);
            text += (text.empty() ? "" : " ") + (value.empty() ? "-" : value);
        }
        return text;
    }

  private:
    ScratchDir tree_;
};

std::string valuesOf(const GroupData& data, const std::string& key,
                     std::initializer_list<const char*> fields) {
    std::string text;
    const Instance& instance = instanceOf(data, key);
    for (const char* const field : fields) text += instance.get(field) + "|";
    return text;
}

TEST(ProcessorTrees, MasksInPlaceOfListsTellTheTopology) {
    const CpuTree tree;
    for (int cpu = 0; cpu < 4; ++cpu) {
        tree.cpuFile(cpu, "topology/physical_package_id", std::to_string(cpu % 2));
        tree.cpuFile(cpu, "topology/core_id", "0");
        const std::string threads = cpu % 2 == 0 ? "00000000,00000005" : "00000000,0000000a";
        tree.cpuFile(cpu, "topology/thread_siblings", threads);
        tree.cpuFile(cpu, "topology/core_siblings", threads);
        tree.cache(cpu, 0, 1, "Data", "16K", threads);
        tree.cache(cpu, 1, 2, "Unified", "2048K", threads);
    }
    tree.file("sys/devices/system/node/node0/cpumap", "00000000,00000005");
    tree.file("sys/devices/system/node/node1/cpumap", "00000000,0000000a");
    EXPECT_EQ(keysOf(tree.processors()), (std::vector<std::string>{"cpu0", "cpu1", "cpu2", "cpu3"}));
    EXPECT_EQ(
        valuesOf(tree.processors(), "cpu3",
                 {"PhysicalPackageId", "CoreId", "ThreadIndex", "NumaNode", "L1dCacheSize", "L2CacheSize"}),
        "1|0|1|1|16|2048|");
    EXPECT_EQ(tree.counts("package1"), "1 1 2 2");
    EXPECT_EQ(valuesOf(tree.packages(), "package0", {"NumaNodes", "L2CacheSize", "L3CacheSize"}), "1|2048||");
}

TEST(ProcessorTrees, PackagesWithoutNumbersAreToldApartByTheirCpus) {
    const CpuTree tree;
    for (int cpu = 0; cpu < 4; ++cpu) {
        tree.cpuFile(cpu, "topology/physical_package_id", "-1");
        tree.cpuFile(cpu, "topology/thread_siblings", std::to_string(1 << cpu));
        tree.cpuFile(cpu, "topology/core_siblings", cpu < 2 ? "3" : "c");
    }
    EXPECT_EQ(keysOf(tree.packages()), (std::vector<std::string>{"package0", "package1"}));
    EXPECT_EQ(tree.counts("package1"), "2 2 2 1");
}

TEST(ProcessorTrees, AKernelWithoutPackagesHasOne) {
    const CpuTree tree;
    for (int cpu = 0; cpu < 4; ++cpu) {
        tree.cpuFile(cpu, "topology/physical_package_id", "-1");
        tree.cpuFile(cpu, "topology/thread_siblings", std::to_string(1 << cpu));
        tree.cpuFile(cpu, "topology/core_siblings", std::to_string(1 << cpu));
    }
    EXPECT_EQ(keysOf(tree.packages()), (std::vector<std::string>{"package0"}));
    EXPECT_EQ(tree.counts("package0"), "4 4 4 1");
}

TEST(ProcessorTrees, TheTotalOfCachesOfUnknownSharersIsUnknown) {
    const CpuTree tree;
    for (int cpu = 0; cpu < 2; ++cpu) {
        tree.topology(cpu, 0, cpu, std::to_string(cpu));
        tree.cache(cpu, 0, 2, "Unified", "512K", "");
        tree.cache(cpu, 1, 3, "Unified", "4M", "");
        tree.cpuFile(cpu, "cache/index1/id", "0");
    }
    EXPECT_EQ(valuesOf(tree.processors(), "cpu0", {"L2CacheSize", "L3CacheSize"}), "512|4096|");
    EXPECT_EQ(valuesOf(tree.packages(), "package0", {"L2CacheSize", "L3CacheSize"}), "|4096|");
}

TEST(ProcessorTrees, TheGeometryOfACacheTellsItsSize) {
    const CpuTree tree;
    tree.cpuFile(0, "cache/index0/level", "1");
    tree.cpuFile(0, "cache/index0/type", "Data");
    tree.cpuFile(0, "cache/index0/coherency_line_size", "64");
    tree.cpuFile(0, "cache/index0/number_of_sets", "128");
    tree.cpuFile(0, "cache/index0/ways_of_associativity", "4");
    EXPECT_EQ(valuesOf(tree.processors(), "cpu0", {"L1dCacheSize"}), "32|");
}

TEST(ProcessorTrees, CpuinfoAloneTellsTheTopologyOfX86) {
    const CpuTree tree;
    std::string info;
    for (int cpu = 0; cpu < 4; ++cpu) {
        info += "processor\t: " + std::to_string(cpu) +
                "\nvendor_id\t: GenuineIntel\nphysical id\t: " + std::to_string(cpu / 2) +
                "\ncore id\t\t: 0\nflags\t\t: fpu ht\n\n";
    }
    tree.file("proc/cpuinfo", info);
    EXPECT_EQ(
        valuesOf(tree.processors(), "cpu3", {"PhysicalPackageId", "CoreId", "ThreadIndex", "AddressWidth"}),
        "1|0|1|32|");
    EXPECT_EQ(tree.counts("package1"), "1 1 2 2");
}

// Four cores with two threads, of which the second ones are cpu4 to cpu7.
CpuTree& withFourCores(CpuTree& tree, std::initializer_list<int> offline) {
    tree.cpusFile("present", "0-7");
    std::string online;
    for (int cpu = 0; cpu < 8; ++cpu) {
        const auto isOff = [&offline](int number) {
            return std::ranges::find(offline, number) != offline.end();
        };
        if (isOff(cpu)) continue;
        online += (online.empty() ? "" : ",") + std::to_string(cpu);
        const int first = cpu % 4;
        const int second = first + 4;
        const std::string threads = isOff(first)    ? std::to_string(second)
                                    : isOff(second) ? std::to_string(first)
                                                    : std::to_string(first) + "," + std::to_string(second);
        tree.topology(cpu, 0, first, threads);
    }
    tree.cpusFile("online", online);
    return tree;
}

TEST(OfflineProcessors, OfAMachineWithoutAnyAreAllCounted) {
    CpuTree tree;
    EXPECT_EQ(withFourCores(tree, {}).counts("package0"), "4 4 8 2");
}

TEST(OfflineProcessors, MayBeOneThread) {
    CpuTree tree;
    EXPECT_EQ(withFourCores(tree, {6}).counts("package0"), "4 4 8 2");
}

TEST(OfflineProcessors, MayBeOneCore) {
    CpuTree tree;
    EXPECT_EQ(withFourCores(tree, {2, 6}).counts("package0"), "4 3 8 2");
    EXPECT_EQ(valuesOf(tree.processors(), "cpu6", {"EnabledState", "PhysicalPackageId"}), "Disabled||");
}

TEST(OfflineProcessors, AreTheOtherThreadsIfMultithreadingIsOff) {
    CpuTree tree;
    tree.cpusFile("smt/control", "off");
    EXPECT_EQ(withFourCores(tree, {4, 5, 6, 7}).counts("package0"), "4 4 8 2");
}

TEST(OfflineProcessors, AreUncountedIfTheyMayBeAnotherPackage) {
    CpuTree tree;
    tree.cpusFile("smt/control", "notsupported");
    EXPECT_EQ(withFourCores(tree, {4, 5, 6, 7}).counts("package0"), "- 4 - 1");
}

TEST(OfflineProcessors, OfCoresOfSeveralKindsMayBeCores) {
    CpuTree tree;
    withFourCores(tree, {6, 7});
    EXPECT_EQ(tree.counts("package0"), "4 4 8 2");
    for (const int cpu : {0, 1, 4, 5}) tree.cpuFile(cpu, "cpufreq/cpuinfo_max_freq", "5000000");
    for (const int cpu : {2, 3}) tree.cpuFile(cpu, "cpufreq/cpuinfo_max_freq", "3800000");
    EXPECT_EQ(tree.counts("package0"), "- 4 8 2");
}

TEST(OfflineProcessors, BelongToTheOnlySocketOfADeviceTree) {
    CpuTree tree;
    tree.file("proc/device-tree/cpus/cpu-map/cluster0/core0/cpu", "1");
    EXPECT_EQ(withFourCores(tree, {4, 5, 6, 7}).counts("package0"), "8 4 8 1");
}

TEST(OfflineProcessors, BelongToThePackageOfTheirNode) {
    const CpuTree tree;
    tree.cpusFile("present", "0-7");
    tree.cpusFile("online", "0-3");
    for (int cpu = 0; cpu < 8; ++cpu) {
        if (cpu < 4) tree.topology(cpu, 0, cpu, std::to_string(cpu));
        tree.file("sys/devices/system/node/node" + std::to_string(cpu / 4) + "/cpu" + std::to_string(cpu) +
                      "/online",
                  cpu < 4 ? "1" : "0");
    }
    EXPECT_EQ(keysOf(tree.packages()), (std::vector<std::string>{"package0"}));
    EXPECT_EQ(tree.counts("package0"), "4 4 4 1");
    EXPECT_EQ(valuesOf(tree.processors(), "cpu5", {"EnabledState", "NumaNode"}), "Disabled|1|");
}

TEST(OfflineProcessors, AreCountedInTheirPackageIfTheKernelTellsIt) {
    const CpuTree tree;
    tree.cpusFile("present", "0-3");
    tree.cpusFile("online", "0-1");
    for (int cpu = 0; cpu < 4; ++cpu) {
        tree.topology(cpu, cpu / 2, cpu % 2, cpu < 2 ? std::to_string(cpu) : "");
    }
    EXPECT_EQ(tree.counts("package0"), "2 2 2 1");
    EXPECT_EQ(tree.counts("package1"), "2 0 2 1");
}

TEST(PackageClock, IsThatOfTheFastestCore) {
    const CpuTree tree;
    for (int cpu = 0; cpu < 3; ++cpu) {
        tree.topology(cpu, 0, cpu, std::to_string(cpu));
        tree.cpuFile(cpu, "cpufreq/cpuinfo_max_freq", cpu == 1 ? "5800000" : "4300000");
    }
    EXPECT_EQ(valuesOf(tree.packages(), "package0", {"MaxClockSpeed"}), "5800|");
}

TEST(CoreIds, AreUniqueIfTheKernelRepeatsThem) {
    const CpuTree tree;
    for (int cpu = 0; cpu < 4; ++cpu) tree.topology(cpu, 0, cpu % 2, std::to_string(cpu));
    for (int cpu = 4; cpu < 6; ++cpu) tree.topology(cpu, 1, cpu, std::to_string(cpu));
    const GroupData data = tree.processors();
    std::string cores;
    for (const Instance& processor : data.instances()) cores += processor.get("CoreId") + " ";
    EXPECT_EQ(cores, "0 1 2 3 4 5 ");
    EXPECT_EQ(tree.counts("package0"), "4 4 4 1");
}

TEST(CoreTypes, FollowTheCapacityOfTheCores) {
    const CpuTree tree;
    const char* const capacities[] = {"414", "414", "970", "1024"};
    for (int cpu = 0; cpu < 4; ++cpu) tree.cpuFile(cpu, "cpu_capacity", capacities[cpu]);
    std::string types;
    const GroupData data = tree.processors();
    for (const Instance& processor : data.instances()) types += processor.get("CoreType") + " ";
    EXPECT_EQ(types, "efficiency efficiency performance performance ");
}

TEST(CoreTypes, AreUnknownIfTheCoresAreAlike) {
    const CpuTree tree;
    tree.cpuFile(0, "cpu_capacity", "1024");
    tree.cpuFile(1, "cpu_capacity", "1010");
    EXPECT_EQ(valuesOf(tree.processors(), "cpu1", {"CoreType"}), "|");
}

// cpuinfo as on kernels before 4.10, which number neither blocks nor cores.
TEST(IbmZ, IsReadFromCpuinfoWithoutBlocks) {
    const CpuTree tree;
    tree.file(
        "proc/cpuinfo",
        "vendor_id       : IBM/S390\n# processors    : 2\nbogomips per cpu: 20325.00\n"
        "features\t: esan3 zarch stfle msa ldisp\n"
        "cache0          : level=1 type=Data scope=Private size=128K line_size=256 associativity=8\n"
        "cache1          : level=1 type=Instruction scope=Private size=96K line_size=256 associativity=6\n"
        "cache2          : level=2 type=Data scope=Private size=2048K line_size=256 associativity=8\n"
        "cache3          : level=2 type=Instruction scope=Private size=2048K line_size=256 associativity=8\n"
        "cache4          : level=3 type=Unified scope=Shared size=65536K line_size=256 associativity=16\n"
        "cache5          : level=4 type=Unified scope=Shared size=491520K line_size=256 associativity=30\n"
        "processor 0: version = FF,  identification = 0133E8,  machine = 2964\n"
        "processor 1: version = FF,  identification = 0133E8,  machine = 2964");
    for (int cpu = 0; cpu < 2; ++cpu) {
        tree.topology(cpu, 1, cpu, std::to_string(cpu));
        tree.cpuFile(cpu, "topology/book_id", std::to_string(cpu));
        tree.cpuFile(cpu, "topology/drawer_id", "0");
    }
    EXPECT_EQ(
        valuesOf(tree.processors(), "cpu1",
                 {"Name", "Manufacturer", "Model", "Architecture", "AddressWidth", "Flags", "L1dCacheSize",
                  "L1iCacheSize", "L2CacheSize", "L3CacheSize", "L4CacheSize", "PhysicalPackageId"}),
        "IBM/S390 2964|IBM|2964|s390x|64|esan3;zarch;stfle;msa;ldisp|128|96|4096|65536|491520|1|");
    EXPECT_EQ(keysOf(tree.packages()), (std::vector<std::string>{"package0", "package1"}));
    EXPECT_EQ(valuesOf(tree.packages(), "package0", {"NumberOfCores", "L2CacheSize", "L3CacheSize"}),
              "1|4096|65536|");
}

struct Described {
    const char* cpuinfo;
    const char*
        values;  // Name, Manufacturer, Family, Model, Stepping, MaxClockSpeed, AddressWidth, Architecture
};

class CpuinfoOf : public testing::TestWithParam<Described> {};

TEST_P(CpuinfoOf, EveryArchitectureIsRead) {
    const CpuTree tree;
    tree.file("proc/cpuinfo", GetParam().cpuinfo);
    EXPECT_EQ(valuesOf(tree.processors(), "cpu0",
                       {"Name", "Manufacturer", "Family", "Model", "Stepping", "MaxClockSpeed",
                        "AddressWidth", "Architecture"}),
              GetParam().values);
}

INSTANTIATE_TEST_SUITE_P(
    ProcessorTrees, CpuinfoOf,
    testing::Values(
        Described{
            "processor\t: 0\ncpu\t\t: Cell Broadband Engine, altivec supported\nclock\t\t: 3192.000000MHz\n"
            "revision\t: 5.1 (pvr 0070 0501)\n\nplatform\t: PS3",
            "Cell Broadband Engine|IBM||0070|5.1|3192|64|ppc64|"},
        Described{"processor\t: 0\ncpu\t\t: PPC970FX, altivec supported\nclock\t\t: 2000.000000MHz\n"
                  "revision\t: 3.0 (pvr 003c 0300)\n\nplatform\t: PowerMac\nL2 cache\t: 512K unified",
                  "PPC970FX|IBM||003c|3.0|2000|64|ppc64|"},
        Described{"processor\t: 0\ncpu\t\t: 7447A, altivec supported\nclock\t\t: 1666.666000MHz\n"
                  "revision\t: 0.2 (pvr 8003 0102)",
                  "7447A|Freescale||8003|0.2|1667|32|ppc|"},
        Described{"processor\t: 0\ncpu\t\t: POWER10 (raw), altivec supported\nclock\t\t: 3700.000000MHz\n"
                  "revision\t: 2.0 (pvr 0080 0200)",
                  "POWER10 (raw)|IBM||0080|2.0|3700|64||"},
        Described{
            "cpu\t\t: UltraSparc T2 (Niagara2)\nfpu\t\t: UltraSparc T2 integrated FPU\ntype\t\t: sun4v\n"
            "ncpus probed\t: 1\nCpu0ClkTck\t: 00000000457646c0\nMMU Type\t: Hypervisor (sun4v)\nState:\n"
            "CPU0:\t\tonline",
            "UltraSparc T2 (Niagara2)||sun4v|||1165|64|sparc64|"},
        Described{"cpu\t\t: UltraSparc T5 (Niagara5)\ntype\t\t: sun4v\nCpu0ClkTck\t: 00000000d6924470\n"
                  "State:\nCPU0:\t\tonline",
                  "UltraSparc T5 (Niagara5)||sun4v|||3600|64|sparc64|"},
        Described{
            "processor\t: 0\nhart\t\t: 1\nisa\t\t: rv64imafdc\nmmu\t\t: sv39\nuarch\t\t: sifive,u74-mc\n"
            "mvendorid\t: 0x489\nmarchid\t\t: 0x8000000000000007\nmimpid\t\t: 0x4210427",
            "sifive,u74-mc|SiFive||8000000000000007|4210427||64|riscv64|"},
        Described{"processor\t: 0\nhart\t\t: 0\nisa\t\t: rv64imafdc_zicsr\nmmu\t\t: sv39",
                  "||||||64|riscv64|"},
        Described{"processor\t: 0\nhart\t\t: 0\nisa\t\t: rv32imac\nuarch\t\t: sifive,e31",
                  "sifive,e31||||||32|riscv32|"},
        Described{"processor\t: 0\nhart\t\t: 0\nisa\t\t: rv64imafdcv\nmvendorid\t: 0x4e\nmarchid\t\t: 0x0",
                  "|Samsung||0|||64|riscv64|"},
        Described{"processor\t: 0\nhart\t\t: 0\nisa\t\t: rv64imafdcv\nmvendorid\t: 0x5b7\nmarchid\t\t: 0x0",
                  "|T-Head||0|||64|riscv64|"},
        Described{
            "processor\t: 0\nhart\t\t: 0\nisa\t\t: rv64imafdcv\nmvendorid\t: 0x1000000000\nmarchid\t\t: 0x0",
            "|1000000000||0|||64|riscv64|"},
        Described{"processor\t: 0\nhart\t\t: 0\nisa\t\t: rv64imafdcv\nmvendorid\t: 0x777\nmarchid\t\t: 0x0",
                  "|777||0|||64|riscv64|"},
        Described{
            "system type\t\t: generic-loongson-machine\n\nprocessor\t\t: 0\npackage\t\t\t: 0\ncore\t\t\t: 0\n"
            "CPU Family\t\t: Loongson-64bit\nModel Name\t\t: Loongson-3A5000\nCPU Revision\t\t: 0x10\n"
            "CPU MHz\t\t\t: 2500.00\nISA\t\t\t: loongarch32 loongarch64",
            "Loongson-3A5000|Loongson|Loongson-64bit|3A5000|10||64|loongarch64|"},
        Described{
            "processor\t\t: 0\npackage\t\t\t: 0\ncore\t\t\t: 0\ncpu family\t\t: Loongson-64bit\n"
            "model name\t\t: Loongson-3A4000\nCPU Revision\t\t: 0x00\nisa\t\t\t: loongarch32 loongarch64",
            "Loongson-3A4000|Loongson|Loongson-64bit|3A4000|00||64|loongarch64|"},
        Described{
            "processor  : 0\nvendor     : GenuineIntel\narch       : IA-64\nfamily     : 32\nmodel      : 1\n"
            "model name : Dual-Core Intel(R) Itanium(R) Processor 9140N\nrevision   : 1\narchrev    : 0\n"
            "features   : branchlong, 16-byte atomic ops\ncpu number : 0\ncpu MHz    : 1598.002",
            "Dual-Core Intel(R) Itanium(R) Processor 9140N|GenuineIntel|32|1|1|1598|64|ia64|"},
        Described{"processor  : 0\nvendor     : GenuineIntel\narch       : IA-64\nfamily     : Itanium 2\n"
                  "model      : 0\nrevision   : 7\ncpu MHz    : 1300.000000",
                  "Itanium 2|GenuineIntel|Itanium 2|0|7|1300|64|ia64|"},
        Described{"processor\t: 0\nBogoMIPS\t: 48.00\nFeatures\t: fp asimd evtstrm\nCPU implementer\t: 0x61\n"
                  "CPU architecture: 8\nCPU variant\t: 0x1\nCPU part\t: 0x023\nCPU revision\t: 1",
                  "Firestorm-M1|Apple|8|023|r1p1||64|aarch64|"},
        Described{"Processor\t: ARM926EJ-S rev 5 (v5l)\nBogoMIPS\t: 99.32\nFeatures\t: swp half thumb\n"
                  "CPU implementer\t: 0x41\nCPU architecture: 5TEJ\nCPU variant\t: 0x0\nCPU part\t: 0x926\n"
                  "CPU revision\t: 5\n\nHardware\t: board",
                  "ARM926|ARM|5TEJ|926|r0p5||32|armv5l|"},
        Described{"cpu\t\t\t: Alpha\ncpu model\t\t: EV67\ncpu variation\t\t: 7\ncpu revision\t\t: 0\n"
                  "cycle frequency [Hz]\t: 667000000 est.\ncpus detected\t\t: 1",
                  "Alpha EV67||||0|667|64|alpha|"}));

TEST(IA64, ListsItsFeatures) {
    const CpuTree tree;
    tree.file("proc/cpuinfo",
              "processor  : 0\narch       : IA-64\nfeatures   : branchlong, 16-byte atomic ops");
    EXPECT_EQ(valuesOf(tree.processors(), "cpu0", {"Flags"}), "branchlong;16-byte atomic ops|");
}

TEST(PowerMac, TellsItsLevel2CacheInCpuinfo) {
    const CpuTree tree;
    tree.file("proc/cpuinfo",
              "processor\t: 0\ncpu\t\t: PPC970FX, altivec supported\nrevision\t: 3.0 (pvr 003c 0300)\n\n"
              "L2 cache\t: 512K unified");
    EXPECT_EQ(valuesOf(tree.processors(), "cpu0", {"L2CacheSize"}), "512|");
    EXPECT_EQ(valuesOf(tree.packages(), "package0", {"L2CacheSize"}), "512|");
}

TEST(DeviceTree, TellsTheCachesOfPower) {
    const CpuTree tree;
    const auto property = [&tree](const std::string& name, std::uint64_t size) {
        std::string bytes;
        for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(size >> shift);
        tree.bytes("proc/device-tree/cpus/" + name, bytes);
    };
    for (const char* const cpu : {"PowerPC,POWER7@0", "PowerPC,POWER7@4"}) {
        property(std::string(cpu) + "/d-cache-size", 32768);
        property(std::string(cpu) + "/i-cache-size", 32768);
    }
    property("l2-cache@2000/d-cache-size", 262144);
    for (int cpu = 0; cpu < 8; ++cpu) tree.topology(cpu, 0, cpu / 4 * 4, cpu < 4 ? "0-3" : "4-7");
    EXPECT_EQ(
        valuesOf(tree.processors(), "cpu5", {"L1dCacheSize", "L1iCacheSize", "L2CacheSize", "L3CacheSize"}),
        "32|32|256||");
    EXPECT_EQ(valuesOf(tree.packages(), "package0", {"L2CacheSize"}), "|");
    property("PowerPC,POWER7@4/d-cache-size", 65536);
    EXPECT_EQ(valuesOf(tree.processors(), "cpu5", {"L1dCacheSize", "L1iCacheSize"}), "|32|");
}

TEST(Sparc, TellsItsCachesInBytes) {
    const CpuTree tree;
    tree.cpuFile(0, "l1_dcache_size", "65536");
    tree.cpuFile(0, "l1_icache_size", "32768");
    tree.cpuFile(0, "l2_cache_size", "1048576");
    EXPECT_EQ(valuesOf(tree.processors(), "cpu0", {"L1dCacheSize", "L1iCacheSize", "L2CacheSize"}),
              "64|32|1024|");
}

}  // namespace
}  // namespace toolkit::quorvah
