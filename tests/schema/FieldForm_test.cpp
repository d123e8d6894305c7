#include "schema/FieldForm.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace schema {
namespace {

struct Case {
    Type type;
    std::vector<std::string_view> right;
    std::vector<std::string_view> wrong;
};

const Case kCases[] = {
    {Type::Text, {"anything", " ", "\xFF"}, {}},
    {Type::Count,
     {"0", "7", "9223372036854775807"},
     {"-1", "+1", "01", "1.0", "9223372036854775808", "10000000000000000000", "1 ", "0x1", "one"}},
    {Type::Integer, {"0", "-300", "60"}, {"-", "+60", "--1", "1.5"}},
    {Type::Decimal, {"0.00", "12.05"}, {"1", ".5", "1.", "-1.0", "1.2.3", "1,5"}},
    {Type::Boolean, {"true", "false"}, {"True", "1", "yes", "false "}},
    {Type::Time,
     {"2026-11-21", "2026-11-21T07:54:56Z", "2016-12-31T23:59:60Z"},
     {"2026-13-01", "2026-00-01", "2026-11-32", "2026-11-21T24:00:00Z", "2026-11-21 07:54:56Z",
      "2026-11-21T07:54:56", "21.11.2026", "2026-11-2"}},
    {Type::Hex, {"0", "00ff"}, {"0x1", "FF", "g", "a b"}},
    {Type::Uuid,
     {"4c4c4544-0042-3510-8053-b4c04f4d3132"},
     {"4C4C4544-0042-3510-8053-B4C04F4D3132", "4c4c45440042351080 53b4c04f4d3132",
      "4c4c4544-0042-3510-8053-b4c04f4d313", "4c4c4544-0042-3510-8053-b4c04f4d31322"}},
    {Type::Ipv4Address, {"192.0.2.1"}, {"192.0.2", "192.0.2.256", "192.0.2.1/24", "::1"}},
    {Type::Ipv6Address, {"::1", "2001:db8::1"}, {"192.0.2.1", "fe80::1%eth0", "1::2::3"}},
    {Type::HardwareAddress,
     {"00", "52:54:00:12:34:56"},
     {"52:54:00:12:34:5", "52:54:00:12:34:56:", "52-54-00-12-34-56", "5A:54:00:12:34:56", ":"}},
};

TEST(FieldForm, AcceptsTheValuesOfATypeOnly) {
    for (const Case& each : kCases) {
        const Field field{.name = "Field", .type = each.type};
        for (const std::string_view value : each.right) EXPECT_TRUE(hasForm(field, value)) << value;
        for (const std::string_view value : each.wrong) EXPECT_FALSE(hasForm(field, value)) << value;
    }
}

TEST(FieldForm, AnUnknownValueHasAnyForm) {
    for (const Case& each : kCases) EXPECT_TRUE(hasForm({.name = "Field", .type = each.type}, ""));
    EXPECT_TRUE(hasForm({.name = "Field", .type = Type::Choice, .choices = "a|b"}, ""));
}

TEST(FieldForm, AChoiceIsOneOfItsWords) {
    const Field field{.name = "Field", .type = Type::Choice, .choices = "HDD|SSD|Not Implemented"};
    for (const char* const value : {"HDD", "SSD", "Not Implemented"}) EXPECT_TRUE(hasForm(field, value));
    for (const char* const value : {"HD", "HDD|SSD", "ssd", "Not", "|"}) EXPECT_FALSE(hasForm(field, value));
}

TEST(FieldForm, EachValueOfAListHasTheForm) {
    const Field list{.name = "Field", .type = Type::Hex, .list = true};
    for (const char* const value : {"0a", "0a;0b"}) EXPECT_TRUE(hasForm(list, value));
    for (const char* const value : {"0a;x", "0a;", ";", "0a,0b"}) EXPECT_FALSE(hasForm(list, value));
    EXPECT_FALSE(hasForm({.name = "Field", .type = Type::Hex}, "0a;0b"));
}

TEST(FieldForm, ASanitizedPrivateValueIsAHash) {
    const Field address{.name = "Field", .type = Type::Ipv4Address, .privacy = Privacy::Address};
    for (const char* const value : {"", "0123456789abcdef", "0123456789abcdef;0123456789abcdef", ";"})
        EXPECT_TRUE(hasSanitizedForm(address, value)) << value;
    for (const char* const value : {"192.0.2.1", "0123456789abcde", "0123456789abcdef;x"})
        EXPECT_FALSE(hasSanitizedForm(address, value)) << value;
    EXPECT_TRUE(hasSanitizedForm({.name = "Field", .privacy = Privacy::Path}, "/home/0123456789abcdef"));
    const Field open{.name = "Field", .type = Type::Ipv4Address};
    EXPECT_TRUE(hasSanitizedForm(open, "192.0.2.1"));
    EXPECT_FALSE(hasSanitizedForm(open, "0123456789abcdef"));
}

}  // namespace
}  // namespace schema
