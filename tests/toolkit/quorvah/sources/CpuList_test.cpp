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

TEST(CpuList, FindsANumberInASortedList) {
    EXPECT_TRUE(contains({0, 2, 5}, 2));
    EXPECT_FALSE(contains({0, 2, 5}, 3));
    EXPECT_FALSE(contains({}, 0));
}

}  // namespace
}  // namespace toolkit::quorvah
