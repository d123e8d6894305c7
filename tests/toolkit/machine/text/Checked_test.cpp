#include "toolkit/machine/text/Checked.h"

#include <gtest/gtest.h>

#include <string_view>
#include <utility>

namespace toolkit {
namespace {

constexpr std::uint64_t kMax = 9223372036854775807;

TEST(Checked, OnlyDigitsAreACount) {
    const std::pair<std::string_view, Count> cases[] = {{"0", 0},
                                                        {"007", 7},
                                                        {"9223372036854775807", kMax},
                                                        {"9223372036854775808", std::nullopt},
                                                        {"18446744073709551615", std::nullopt},
                                                        {"18446744073709551616", std::nullopt},
                                                        {"99999999999999999999999999", std::nullopt},
                                                        {"-5", std::nullopt},
                                                        {"-0", std::nullopt},
                                                        {"+5", std::nullopt},
                                                        {" 5", std::nullopt},
                                                        {"5 ", std::nullopt},
                                                        {"0x5", std::nullopt},
                                                        {"5x", std::nullopt},
                                                        {"1e3", std::nullopt},
                                                        {"", std::nullopt}};
    for (const auto& [text, count] : cases) EXPECT_EQ(readCount(text), count) << text;
    EXPECT_EQ(readCount("ff", 16), 255U);
    EXPECT_EQ(readCount("0xff", 16), std::nullopt);
    EXPECT_EQ(readCount("-1", 16), std::nullopt);
}

TEST(Checked, ALeadingCountEndsWithItsDigits) {
    const std::pair<std::string_view, Count> cases[] = {{"12.5 kB", 12},
                                                        {"16 kB", 16},
                                                        {"3", 3},
                                                        {"3\n", 3},
                                                        {"-3 kB", std::nullopt},
                                                        {"+3 kB", std::nullopt},
                                                        {" 3 kB", std::nullopt},
                                                        {"3x", std::nullopt},
                                                        {"0x10 kB", std::nullopt},
                                                        {"", std::nullopt},
                                                        {".5", std::nullopt},
                                                        {"9223372036854775808 kB", std::nullopt}};
    for (const auto& [text, count] : cases) EXPECT_EQ(readLeadingCount(text), count) << text;
}

TEST(Checked, WhatDoesNotFitIsUnknown) {
    EXPECT_EQ(sum(2, 3), 5U);
    EXPECT_EQ(sum(kMax - 1, 1), kMax);
    EXPECT_EQ(sum(kMax, 1), std::nullopt);
    EXPECT_EQ(sum(kMax, kMax), std::nullopt);
    EXPECT_EQ(sum(~std::uint64_t{0}, 2), std::nullopt);
    EXPECT_EQ(sum(std::nullopt, 1), std::nullopt);
    EXPECT_EQ(product(0, kMax), 0U);
    EXPECT_EQ(product(kMax, 1), kMax);
    EXPECT_EQ(product(kMax, 2), std::nullopt);
    EXPECT_EQ(product(std::uint64_t{1} << 32, std::uint64_t{1} << 32), std::nullopt);
    EXPECT_EQ(product(1, std::nullopt), std::nullopt);
    EXPECT_EQ(counted(kMax + 1), std::nullopt);
}

}  // namespace
}  // namespace toolkit
