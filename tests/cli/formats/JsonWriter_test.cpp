#include "cli/formats/JsonWriter.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/Samples.h"

namespace zavcli {
namespace {

using Json = nlohmann::ordered_json;

TEST(JsonWriter, GroupsAreArraysOfObjects) {
    const Json json = Json::parse(jsonText(zavtest::sampleInventory()));
    const Json& groups = json.at("groups");
    EXPECT_EQ((Json{{"DeviceID", "cpu0"}, {"Name", "A, \"B\" & <C>"}}), groups.at("Processor").at(0));
    EXPECT_EQ((Json{{"DeviceID", "cpu1"}, {"Name", ""}}), groups.at("Processor").at(1));
    EXPECT_EQ("gr\xc3\xb6\xc3\x9f\xf0\x9f\x98\x80", groups.at("Memory").at(0).at("Note"));
}

TEST(JsonWriter, GroupWithoutInstancesIsAnEmptyArray) {
    const Json groups = Json::parse(jsonText(zavtest::sampleInventory())).at("groups");
    EXPECT_EQ(Json::array(), groups.at("Modem"));
    EXPECT_EQ(Json::array({Json::object()}), groups.at("Monitor"));
}

TEST(JsonWriter, StatusOfEachGroupIsWritten) {
    HardwareInventory inventory;
    inventory.groups = {{30, "Modem", {}, {GroupState::Complete, ""}},
                        {25, "SoftwarePackages", {}, {GroupState::Unread, "rpm-broken"}},
                        {14, "Printer", {}, {GroupState::Unsupported, ""}},
                        {32, "Monitor", {}, {}}};
    EXPECT_EQ((Json{{"Modem", {{"status", "complete"}}},
                    {"SoftwarePackages", {{"status", "unread"}, {"reason", "rpm-broken"}}},
                    {"Printer", {{"status", "unsupported"}}},
                    {"Monitor", {{"status", "unknown"}}}}),
              Json::parse(jsonText(inventory)).at("status"));
}

TEST(JsonWriter, CircumstancesOfTheScanAreWritten) {
    const Json scan = Json::parse(jsonText(zavtest::sampleInventory())).at("scan");
    EXPECT_EQ((Json{{"program", "zav 0.1.0"},
                    {"time", "2026-11-21T06:14:45Z"},
                    {"milliseconds", 12},
                    {"toolkit", "/opt/zav/bin"}}),
              scan);
}

TEST(JsonWriter, ScannedDirectoryIsWrittenUnlessItIsThisMachine) {
    EXPECT_EQ("/mnt/image", Json::parse(jsonText(zavtest::oddInventory())).at("scan").at("root"));
}

TEST(JsonWriter, OddValuesSurviveARoundTrip) {
    const HardwareInventory odd = zavtest::oddInventory();
    const Json object = Json::parse(jsonText(odd)).at("groups").at("Memory").at(0);
    for (const Field& field : odd.groups[0].instances[0])
        EXPECT_EQ(Json(field.value), object.at(field.name)) << field.name;
}

TEST(JsonWriter, OrderOfTheInventoryIsKept) {
    std::vector<std::string> names;
    const Json json = Json::parse(jsonText(zavtest::sampleInventory()));
    for (const auto& [name, instances] : json.at("groups").items()) names.push_back(name);
    EXPECT_EQ((std::vector<std::string>{"Processor", "Memory", "Modem", "Monitor"}), names);
}

TEST(JsonWriter, PathThatIsNotUtf8GivesValidJson) {
    HardwareInventory inventory = zavtest::sampleInventory();
    inventory.scan.toolkit = "/opt/\xff";
    EXPECT_EQ("/opt/\xef\xbf\xbd", Json::parse(jsonText(inventory)).at("scan").at("toolkit"));
}

}  // namespace
}  // namespace zavcli
