#include "schema/Quantity.h"

#include <gtest/gtest.h>

namespace schema {
namespace {

std::string readable(std::string_view unit, std::string_view value, bool binary = false) {
    const Field field{.name = "f", .type = Type::Count, .unit = unit, .binary = binary};
    return readableValue(field, value);
}

TEST(Quantity, SizesHaveTheUnitsOfTheirMakers) {
    EXPECT_EQ("274.9 GB", readable("bytes", "274877906944"));
    EXPECT_EQ("1 TB", readable("bytes", "1000204886016"));
    EXPECT_EQ("16 GiB", readable("bytes", "17179869184", true));
    EXPECT_EQ("512 KiB", readable("KiB", "512"));
    EXPECT_EQ("32 MiB", readable("KiB", "32768"));
    EXPECT_EQ("23.5 GiB", readable("KiB", "24684084"));
    EXPECT_EQ("9223.4 PB", readable("bytes", "9223372036854775807"));
}

TEST(Quantity, SmallNumbersOfBytesAreExact) {
    EXPECT_EQ("4096 B", readable("bytes", "4096"));
    EXPECT_EQ("65536 B", readable("bytes", "65536"));
    EXPECT_EQ("100 kB", readable("bytes", "100000"));
}

TEST(Quantity, ClocksAndSpeedsAreScaled) {
    EXPECT_EQ("800 MHz", readable("MHz", "800"));
    EXPECT_EQ("2.6 GHz", readable("MHz", "2600"));
    EXPECT_EQ("2.25 GHz", readable("MHz", "2250"));
    EXPECT_EQ("1 Gbit/s", readable("bit/s", "1000000000"));
    EXPECT_EQ("2.5 Gbit/s", readable("bit/s", "2500000000"));
    EXPECT_EQ("3200 MT/s", readable("MT/s", "3200"));
    EXPECT_EQ("7 %", readable("percent", "7"));
}

TEST(Quantity, RoundingUpReachesTheNextUnit) {
    EXPECT_EQ("999.9 MB", readable("bytes", "999949999"));
    EXPECT_EQ("1 GB", readable("bytes", "999950000"));
    EXPECT_EQ("1 MiB", readable("KiB", "1024"));
    EXPECT_EQ("1023 KiB", readable("KiB", "1023"));
}

TEST(Quantity, OtherValuesStayAsTheyAre) {
    EXPECT_EQ("", readable("bytes", ""));
    EXPECT_EQ("much", readable("bytes", "much"));
    EXPECT_EQ("-5", readable("bytes", "-5"));
    EXPECT_EQ("12", readable("", "12"));
    EXPECT_EQ("250", readable("1/100 processor", "250"));
    EXPECT_EQ("1;2", readableValue({.name = "f", .type = Type::Count, .unit = "bytes", .list = true}, "1;2"));
}

}  // namespace
}  // namespace schema
