#include "toolkit/quorvah/report/Report.h"

#include <gtest/gtest.h>

#include <stdexcept>

using toolkit::quorvah::FieldDef;
using toolkit::quorvah::Group;
using toolkit::quorvah::Instance;
using toolkit::quorvah::naturallyBefore;
using toolkit::quorvah::Report;

namespace {

constexpr FieldDef kFields[] = {{"DeviceID"}, {"Size"}, {"Removable"}, {"Parts"}};
constexpr Group kGroup{"Some Thing", "SomeThing", kFields, nullptr};

constexpr FieldDef kHexFields[] = {{"Address", FieldDef::kBytewise}};
constexpr Group kHexGroup{"Hex", "Hex", kHexFields, nullptr};

std::vector<std::string> keysOf(const Report& report) {
    std::vector<std::string> keys;
    for (const Instance& instance : report.instances()) keys.emplace_back(instance.values().front());
    return keys;
}

std::vector<std::string> textsOf(const Instance& instance) {
    return {instance.values().begin(), instance.values().end()};
}

}  // namespace

TEST(Instance, HasAllFieldsOfTheGroupEmptyAtFirst) {
    Report report(kGroup);
    const Instance& instance = report.add();
    EXPECT_EQ(textsOf(instance), (std::vector<std::string>{"", "", "", ""}));
}

TEST(Instance, WritesEachTypeAsReadersExpectIt) {
    Report report(kGroup);
    Instance& instance = report.add();
    instance.set("DeviceID", "sda");
    instance.set("Size", std::uint64_t{18446744073709551615U});
    instance.set("Removable", false);
    instance.set("Parts", std::vector<std::string>{"a", "b"});
    EXPECT_EQ(textsOf(instance), (std::vector<std::string>{"sda", "18446744073709551615", "false", "a;b"}));
}

TEST(Instance, FieldsCanBeSetInAnyOrderAndAgain) {
    Report report(kGroup);
    Instance& instance = report.add();
    instance.set("Parts", "x");
    instance.set("Size", -1);
    instance.set("DeviceID", std::string("cpu0"));
    instance.set("Parts", std::string_view("y"));
    EXPECT_EQ(textsOf(instance), (std::vector<std::string>{"cpu0", "-1", "", "y"}));
    EXPECT_EQ(instance.get("Parts"), "y");
}

TEST(Instance, AMissingValueLeavesTheFieldAsItIs) {
    Report report(kGroup);
    Instance& instance = report.add();
    instance.set("Size", std::optional<int>());
    instance.set("Removable", std::optional<bool>(true));
    EXPECT_EQ(instance.get("Size"), "");
    EXPECT_EQ(instance.get("Removable"), "true");
}

TEST(Instance, RefusesAFieldThatTheGroupDoesNotHave) {
    Report report(kGroup);
    Instance& instance = report.add();
    EXPECT_THROW(instance.set("Colour", "red"), std::logic_error);
    EXPECT_THROW(instance.set("deviceid", "sda"), std::logic_error);
}

TEST(Report, SortsInstancesByTheNumbersInTheirKeys) {
    Report report(kGroup);
    for (const char* key : {"cpu10", "cpu9", "cpu0", "cpu2"}) report.add(key);
    report.sort();
    EXPECT_EQ(keysOf(report), (std::vector<std::string>{"cpu0", "cpu2", "cpu9", "cpu10"}));
}

TEST(Report, SortsABytewiseKeyByItsBytes) {
    Report report(kHexGroup);
    for (const char* key : {"0000:00:1f.2", "0000:00:10.0", "0000:00:0a.0"}) report.add(key);
    report.sort();
    EXPECT_EQ(keysOf(report), (std::vector<std::string>{"0000:00:0a.0", "0000:00:10.0", "0000:00:1f.2"}));
}

TEST(Report, KeepsTheOrderOfInstancesWithTheSameKey) {
    Report report(kGroup);
    report.add("a").set("Size", 1);
    report.add("a").set("Size", 2);
    report.sort();
    EXPECT_EQ(report.instances()[0].get("Size"), "1");
    EXPECT_EQ(report.instances()[1].get("Size"), "2");
}

TEST(Report, TheFirstReasonForBeingPartialStands) {
    Report report(kGroup);
    EXPECT_EQ(report.reason(), "");
    report.partial("permission");
    report.partial("timeout");
    EXPECT_EQ(report.reason(), "permission");
}

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
    // The digits that differ stand behind alike ones, a whole number of words from the front or not.
    for (std::size_t front = 0; front < 20; ++front) {
        const std::string alike(front, 'k');
        EXPECT_TRUE(naturallyBefore(alike + "129x", alike + "1210a")) << front;
        EXPECT_FALSE(naturallyBefore(alike + "1210a", alike + "129x")) << front;
        EXPECT_TRUE(naturallyBefore(alike + "12", alike + "12-")) << front;
    }
}
