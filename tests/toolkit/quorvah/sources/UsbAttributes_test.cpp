#include "toolkit/quorvah/sources/UsbAttributes.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

TEST(UsbAttributes, ReleasesAreDecoded) {
    const struct {
        const char* bcd;
        const char* release;
    } kCases[] = {{"0516", "5.16"}, {"7200", "72.00"}, {"0001", "0.01"}, {"100a", "10.0a"},
                  {"", ""},         {"516", ""},       {"05160", ""},    {"05 6", ""}};
    for (const auto& test : kCases) EXPECT_EQ(test.release, usbRelease(test.bcd)) << test.bcd;
}

TEST(UsbAttributes, SpeedsBecomeBitsPerSecond) {
    const struct {
        const char* megabits;
        const char* speed;
    } kCases[] = {
        {"1.5", "1500000"}, {"12", "12000000"}, {"480", "480000000"}, {"20000", "20000000000"}, {"", ""},
        {"unknown", ""},    {"0", ""},          {"-1", ""},           {"4294967295", ""},       {"1.5.", ""}};
    for (const auto& test : kCases) EXPECT_EQ(test.speed, usbSpeed(test.megabits)) << test.megabits;
}

TEST(UsbAttributes, PowerLosesItsUnit) {
    EXPECT_EQ("100", usbPower("100mA"));
    EXPECT_EQ("0", usbPower("0mA"));
    for (const char* const text : {"", "mA", "100", "100 mA", "-1mA", "1W"})
        EXPECT_EQ("", usbPower(text)) << text;
}

}  // namespace
}  // namespace toolkit::quorvah
