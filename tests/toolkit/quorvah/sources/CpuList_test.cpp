#include "toolkit/quorvah/sources/CpuList.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

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

TEST(CpuList, RejectsWhatNoKernelWrites) {
    for (const char* const text :
         {"x", "-1", "1-", "3-1", "0-3x", "0--3", "1,,2", ",1", "65536", "0-4294967295",
          "99999999999999999999", "0x3", "1 2", "0-65535,0-65535,0-65535"}) {
        EXPECT_TRUE(readCpuList(text).empty()) << text;
    }
}

TEST(CpuMask, ReadsGroupsOf32Bits) {
    const std::pair<const char*, std::vector<int>> cases[] = {
        {"f", {0, 1, 2, 3}},
        {"00000000,0000000f", {0, 1, 2, 3}},
        {"00000001,80000000\n", {31, 32}},
        {"1,00000000,00000000", {64}},
        {"0x5", {0, 2}},
        {"00", {}},
        {"00000000,00000000", {}},
        {"", {}},
    };
    for (const auto& [text, numbers] : cases) EXPECT_EQ(readCpuMask(text), numbers) << text;
}

TEST(CpuMask, RejectsWhatNoKernelWrites) {
    for (const char* const text : {"x", "-1", "1-3", ",1", "1,", "1,,1", "100000000", "f g"})
        EXPECT_TRUE(readCpuMask(text).empty()) << text;
    std::string wide = "1";
    for (int group = 0; group < 2048; ++group) wide += ",00000000";
    EXPECT_TRUE(readCpuMask(wide).empty());
}

TEST(CpuList, IsWrittenAsTheKernelWritesIt) {
    for (const char* const text : {"", "5", "0-3", "0,2,4-6,65535"})
        EXPECT_EQ(cpuListText(readCpuList(text)), text);
}

TEST(CpuList, FindsANumberInASortedList) {
    EXPECT_TRUE(contains({0, 2, 5}, 2));
    EXPECT_FALSE(contains({0, 2, 5}, 3));
    EXPECT_FALSE(contains({}, 0));
}

}  // namespace
}  // namespace toolkit::quorvah
