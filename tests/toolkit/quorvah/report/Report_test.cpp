#include "toolkit/quorvah/report/Report.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
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

}  // namespace
}  // namespace toolkit::quorvah
