#include <gtest/gtest.h>

#include <stdexcept>

#include "toolkit/quorvah/report/GroupData.h"

namespace toolkit::quorvah {
namespace {

constexpr schema::Field kFields[] = {{"DeviceID"}, {"Size"}, {"Removable"}, {"Parts"}};
constexpr Group kGroup{"Some Thing", "SomeThing", kFields, nullptr};

std::vector<std::string> textsOf(const Instance& instance) {
    return {instance.values().begin(), instance.values().end()};
}

TEST(Instance, HasAllFieldsOfTheGroupEmptyAtFirst) {
    GroupData data(kGroup);
    const Instance& instance = data.add();
    EXPECT_EQ(textsOf(instance), (std::vector<std::string>{"", "", "", ""}));
}

TEST(Instance, ConvertsEveryTypeToText) {
    GroupData data(kGroup);
    Instance& instance = data.add();
    instance.set("DeviceID", "sda");
    instance.set("Size", std::uint64_t{18446744073709551615U});
    instance.set("Removable", false);
    instance.set("Parts", std::vector<std::string>{"a", "b"});
    EXPECT_EQ(textsOf(instance), (std::vector<std::string>{"sda", "18446744073709551615", "false", "a;b"}));
}

TEST(Instance, FieldsCanBeSetInAnyOrderAndAgain) {
    GroupData data(kGroup);
    Instance& instance = data.add();
    instance.set("Parts", "x");
    instance.set("Size", -1);
    instance.set("DeviceID", std::string("cpu0"));
    instance.set("Parts", std::string_view("y"));
    EXPECT_EQ(textsOf(instance), (std::vector<std::string>{"cpu0", "-1", "", "y"}));
    EXPECT_EQ(instance.get("Parts"), "y");
}

TEST(Instance, AMissingValueDoesNotChangeTheField) {
    GroupData data(kGroup);
    Instance& instance = data.add();
    instance.set("Size", std::optional<int>());
    instance.set("Removable", std::optional<bool>(true));
    EXPECT_EQ(instance.get("Size"), "");
    EXPECT_EQ(instance.get("Removable"), "true");
}

TEST(Instance, RejectsAFieldThatTheGroupDoesNotHave) {
    GroupData data(kGroup);
    Instance& instance = data.add();
    EXPECT_THROW(instance.set("Colour", "red"), std::logic_error);
    EXPECT_THROW(instance.set("deviceid", "sda"), std::logic_error);
}

}  // namespace
}  // namespace toolkit::quorvah
