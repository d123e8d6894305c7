#include "toolkit/quorvah/report/GroupData.h"

#include <gtest/gtest.h>

namespace toolkit::quorvah {
namespace {

constexpr schema::Field kFields[] = {{"DeviceID"}, {"Size"}, {"Removable"}, {"Parts"}};
constexpr Group kGroup{"Some Thing", "SomeThing", kFields, nullptr};

constexpr schema::Field kHexFields[] = {{.name = "Address", .bytewise = true}};
constexpr Group kHexGroup{"Hex", "Hex", kHexFields, nullptr};

std::vector<std::string> keysOf(const GroupData& data) {
    std::vector<std::string> keys;
    for (const Instance& instance : data.instances()) keys.emplace_back(instance.values().front());
    return keys;
}

TEST(GroupData, SortsInstancesByTheNumbersInTheirKeys) {
    GroupData data(kGroup);
    for (const char* key : {"cpu10", "cpu9", "cpu0", "cpu2"}) data.add(key);
    data.sort();
    EXPECT_EQ(keysOf(data), (std::vector<std::string>{"cpu0", "cpu2", "cpu9", "cpu10"}));
}

TEST(GroupData, SortsABytewiseKeyByItsBytes) {
    GroupData data(kHexGroup);
    for (const char* key : {"0000:00:1f.2", "0000:00:10.0", "0000:00:0a.0"}) data.add(key);
    data.sort();
    EXPECT_EQ(keysOf(data), (std::vector<std::string>{"0000:00:0a.0", "0000:00:10.0", "0000:00:1f.2"}));
}

TEST(GroupData, KeepsTheOrderOfInstancesWithTheSameKey) {
    GroupData data(kGroup);
    data.add("a").set("Size", 1);
    data.add("a").set("Size", 2);
    data.sort();
    EXPECT_EQ(data.instances()[0].get("Size"), "1");
    EXPECT_EQ(data.instances()[1].get("Size"), "2");
}

TEST(GroupData, KeepsTheFirstReasonForBeingPartial) {
    GroupData data(kGroup);
    EXPECT_EQ(data.reason(), "");
    data.partial("permission");
    data.partial("timeout");
    EXPECT_EQ(data.reason(), "permission");
}

TEST(GroupData, DropsValuesThatAreNotOfTheirTypeWithAWarning) {
    static constexpr schema::Field kTyped[] = {{.name = "DeviceID"},
                                               {.name = "Size", .type = schema::Type::Count},
                                               {.name = "Removable", .type = schema::Type::Boolean}};
    constexpr Group kThing{"Some Thing", "SomeThing", kTyped, nullptr};
    GroupData data(kThing);
    data.add("right").set("Size", "5");
    data.add("wrong").set("Size", "-5");
    data.add("worse").set("Size", "five");
    data.instances().front().set("Removable", true);
    data.dropMalformed();
    EXPECT_EQ(data.instances()[0].get("Size"), "5");
    EXPECT_EQ(data.instances()[0].get("Removable"), "true");
    EXPECT_EQ(data.instances()[1].get("Size"), "");
    EXPECT_EQ(data.instances()[1].get("DeviceID"), "wrong");
    EXPECT_EQ(data.instances()[2].get("Size"), "");
    EXPECT_EQ(data.warnings(),
              std::vector<std::string>{"SomeThing: a value of Size is not of its type and omitted"});
}

}  // namespace
}  // namespace toolkit::quorvah
