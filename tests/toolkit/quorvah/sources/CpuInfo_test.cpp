#include "toolkit/quorvah/sources/CpuInfo.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(CpuInfo, KeepsTheBlockOfEachCpu) {
    const CpuInfo info(
        "processor\t: 0\nmodel name\t: A\n\nprocessor\t: 12\nmodel name\t: B: c\nflags\t\t:\n\n");
    EXPECT_EQ(info.cpus(), (std::vector<int>{0, 12}));
    EXPECT_TRUE(info.lists(12));
    EXPECT_FALSE(info.lists(1));
    EXPECT_EQ(info.value(0, "model name"), "A");
    EXPECT_EQ(info.value(12, "model name"), "B: c");
    EXPECT_EQ(info.value(12, "flags"), "");
    EXPECT_EQ(info.value(1, "model name"), "");
    EXPECT_EQ(info.value(0, "model"), "");
}

TEST(CpuInfo, LinesOutsideTheBlocksApplyToAllCpus) {
    const CpuInfo info(
        "vendor_id : IBM/S390\nfeatures : esan3\n\ncpu number : 0\ncpu MHz static : 5208\n\nmachine : x\n");
    EXPECT_EQ(info.value(0, "features"), "esan3");
    EXPECT_EQ(info.value(0, "cpu MHz static"), "5208");
    EXPECT_EQ(info.value(0, "machine"), "x");
}

TEST(CpuInfo, ANameInPlaceOfTheNumberIsNotACpu) {
    const CpuInfo info(
        "Processor\t: AArch64 Processor rev 4\nprocessor\t: 0\nprocessor\t: 1\n\nHardware : board\n");
    EXPECT_EQ(info.cpus(), (std::vector<int>{0, 1}));
}

TEST(CpuInfo, ListsCpusThatAreDescribedTogether) {
    const CpuInfo mainframe(
        "vendor_id       : IBM/S390\nbogomips per cpu: 3033.00\n"
        "processor 0: version = FF,  identification = 0133E8,  machine = 2964\n"
        "processor 1: version = FF,  identification = 0133E8,  machine = 2964\n");
    EXPECT_EQ(mainframe.cpus(), (std::vector<int>{0, 1}));
    EXPECT_EQ(mainframe.value(1, "bogomips per cpu"), "3033.00");
    const CpuInfo sparc(
        "cpu\t\t: UltraSparc T2 (Niagara2)\ntype\t\t: sun4v\nncpus probed\t: 2\n"
        "Cpu0ClkTck\t: 00000000457646c0\nCpu9ClkTck\t: 00000000457646c0\nState:\nCPU0:\t\tonline\n");
    EXPECT_EQ(sparc.cpus(), (std::vector<int>{0, 9}));
    EXPECT_EQ(sparc.value(9, "type"), "sun4v");
}

TEST(CpuInfo, AFileWithoutNumbersDescribesEveryCpu) {
    const CpuInfo info("Processor\t: ARM926EJ-S rev 5 (v5l)\nCPU part\t: 0x926\n");
    EXPECT_TRUE(info.cpus().empty());
    EXPECT_EQ(info.value(0, "CPU part"), "0x926");
}

TEST(CpuInfo, TheCpuNumberOfIa64IsNotItsNumber) {
    const CpuInfo info(
        "processor  : 0\narch       : IA-64\ncpu number : 0\n\nprocessor  : 1\narch       : IA-64\n"
        "cpu number : 0\ncore id    : 1\n");
    EXPECT_EQ(info.value(0, "core id"), "");
    EXPECT_EQ(info.value(1, "core id"), "1");
}

TEST(CpuInfo, MalformedTextHasNoCpus) {
    for (const char* const text : {"", "\n\n\n", "processor", "processor:", "processor: -1",
                                   "processor: 99999999", "processor: 1x", ":::", "\0\0"}) {
        EXPECT_TRUE(CpuInfo(text).cpus().empty()) << text;
    }
}

TEST(CpuInfo, RecognizesTheArchitecture) {
    const std::pair<const char*, const char*> cases[] = {
        {"processor: 0\nflags: fpu lm sse\n", "x86_64"},
        {"processor: 0\nflags: fpu sse\n", "i686"},
        {"processor: 0\nflags: fpu lmx\n", "i686"},
        {"processor: 0\nCPU architecture: 8\n", "aarch64"},
        {"vendor_id: IBM/S390\n\ncpu number: 0\n", "s390x"},
        {"processor: 0\nisa: rv64imafdc\n", "riscv64"},
        {"processor: 0\nisa: rv32ima\n", "riscv32"},
        {"processor: 0\nCPU architecture: 7\n", "armv7l"},
        {"processor: 0\nFeatures: fp asimd\nCPU architecture: 8\n", "aarch64"},
        {"processor: 0\nFeatures: half thumb\nCPU architecture: 8\n", "armv8l"},
        {"processor: 0\nmodel name: ARMv6-compatible processor rev 7 (v6l)\nCPU architecture: 7\n", "armv6l"},
        {"Processor: ARM926EJ-S rev 5 (v5l)\nCPU architecture: 5TEJ\n", "armv5l"},
        {"vendor_id: IBM/S390\nprocessor 0: version = FF\n", "s390x"},
        {"processor: 0\nvendor: GenuineIntel\narch: IA-64\n", "ia64"},
        {"cpu: TI UltraSparc IIIi (Jalapeno)\ntype: sun4u\n", "sparc64"},
        {"cpu: SPARC-M7\ntype: sun4v\n", "sparc64"},
        {"processor: 0\nISA: loongarch32 loongarch64\n", "loongarch64"},
        {"processor: 0\ncpu: POWER7 (architected)\nrevision: 2.1 (pvr 003f 0201)\n", "ppc64"},
        {"processor: 0\ncpu: POWER9, altivec supported\nrevision: 2.2 (pvr 004e 1202)\n", ""},
        {"processor: 0\ncpu: Cell Broadband Engine\nrevision: 5.1 (pvr 0070 0501)\n", "ppc64"},
        {"processor: 0\ncpu: 7447A\nrevision: 0.5 (pvr 8003 0105)\n", "ppc"},
        {"processor: 0\nisa: mips1 mips2\n", ""},
        {"", ""},
    };
    for (const auto& [text, architecture] : cases)
        EXPECT_EQ(CpuInfo(text).architecture(), architecture) << text;
}

}  // namespace
}  // namespace toolkit::quorvah
