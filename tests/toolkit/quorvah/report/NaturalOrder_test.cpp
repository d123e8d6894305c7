#include "toolkit/quorvah/report/NaturalOrder.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(NaturalOrder, IsAStrictOrder) {
    const std::vector<std::string> ascending = {"",     "007",   "07",    "7",      "8",
                                                "10",   "cpu",   "cpu0",  "cpu00x", "cpu0x",
                                                "cpu1", "cpu2a", "cpu2b", "cpu12",  "dm-1"};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            EXPECT_EQ(naturallyBefore(ascending[i], ascending[j]), i < j)
                << ascending[i] << " " << ascending[j];
        }
    }
}

TEST(NaturalOrder, ComparesNumbersOfAnyLengthByValue) {
    EXPECT_TRUE(naturallyBefore("99999999999999999999999", "100000000000000000000000"));
    EXPECT_FALSE(naturallyBefore("100000000000000000000000", "99999999999999999999999"));
    // The digits that differ follow a common prefix of any length, in whole words or not.
    for (std::size_t front = 0; front < 20; ++front) {
        const std::string alike(front, 'k');
        EXPECT_TRUE(naturallyBefore(alike + "129x", alike + "1210a")) << front;
        EXPECT_FALSE(naturallyBefore(alike + "1210a", alike + "129x")) << front;
        EXPECT_TRUE(naturallyBefore(alike + "12", alike + "12-")) << front;
    }
}

}  // namespace
}  // namespace toolkit::quorvah
