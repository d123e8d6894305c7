#include <gtest/gtest.h>

#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/CpuList.h"

using toolkit::quorvah::CpuInfo;
using toolkit::quorvah::readCpuList;

TEST(CpuList, ReadsNumbersAndRanges) {
    const std::pair<const char*, std::vector<int>> cases[] = {
        {"0", {0}},
        {"0-3", {0, 1, 2, 3}},
        {"0-1,4,6-7\n", {0, 1, 4, 6, 7}},
        {" 5 ", {5}},
        {"7,1,1-2", {1, 2, 7}},
        {"3-3", {3}},
        {"65535", {65535}},
        {"", {}},
        {"\n", {}},
    };
    for (const auto& [text, numbers] : cases) EXPECT_EQ(readCpuList(text), numbers) << text;
}

TEST(CpuList, RefusesWhatNoKernelWrites) {
    for (const char* const text :
         {"x", "-1", "1-", "3-1", "0-3x", "0--3", "1,,2", ",1", "65536", "0-4294967295",
          "99999999999999999999", "0x3", "1 2", "0-65535,0-65535,0-65535"}) {
        EXPECT_TRUE(readCpuList(text).empty()) << text;
    }
}

TEST(CpuList, FindsANumberInASortedList) {
    EXPECT_TRUE(toolkit::quorvah::contains({0, 2, 5}, 2));
    EXPECT_FALSE(toolkit::quorvah::contains({0, 2, 5}, 3));
    EXPECT_FALSE(toolkit::quorvah::contains({}, 0));
}

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

TEST(CpuInfo, LinesOutsideOfTheBlocksHoldForAllCpus) {
    const CpuInfo info(
        "vendor_id : IBM/S390\nfeatures : esan3\n\ncpu number : 0\ncpu MHz static : 5208\n\nmachine : x\n");
    EXPECT_EQ(info.value(0, "features"), "esan3");
    EXPECT_EQ(info.value(0, "cpu MHz static"), "5208");
    EXPECT_EQ(info.value(0, "machine"), "x");
}

TEST(CpuInfo, ANameUnderTheKeyOfTheNumberIsNoCpu) {
    const CpuInfo info(
        "Processor\t: AArch64 Processor rev 4\nprocessor\t: 0\nprocessor\t: 1\n\nHardware : board\n");
    EXPECT_EQ(info.cpus(), (std::vector<int>{0, 1}));
}

TEST(CpuInfo, BrokenTextHasNoCpus) {
    for (const char* const text : {"", "\n\n\n", "processor", "processor:", "processor: -1",
                                   "processor: 99999999", "processor: 1x", ":::", "\0\0"}) {
        EXPECT_TRUE(CpuInfo(text).cpus().empty()) << text;
    }
}

TEST(CpuInfo, GivesAwayTheArchitecture) {
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

TEST(ArmParts, AreNamedWithinTheirImplementer) {
    EXPECT_EQ(toolkit::quorvah::armImplementer("41"), "ARM");
    EXPECT_EQ(toolkit::quorvah::armPart("41", "d0c"), "Neoverse-N1");
    EXPECT_EQ(toolkit::quorvah::armPart("48", "d01"), "TaiShan-v110");
    EXPECT_EQ(toolkit::quorvah::armPart("c0", "ac3"), "Ampere-1");
    EXPECT_EQ(toolkit::quorvah::armPart("41", "fff"), "");
    EXPECT_EQ(toolkit::quorvah::armPart("99", "d0c"), "");
    EXPECT_EQ(toolkit::quorvah::armImplementer(""), "");
}
