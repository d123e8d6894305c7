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
        {"processor: 0\nCPU architecture: 7\n", ""},
        {"", ""},
    };
    for (const auto& [text, architecture] : cases)
        EXPECT_EQ(CpuInfo(text).architecture(), architecture) << text;
}

}  // namespace
}  // namespace toolkit::quorvah
