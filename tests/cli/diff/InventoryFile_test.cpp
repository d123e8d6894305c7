#include "cli/diff/InventoryFile.h"

#include <gtest/gtest.h>

#include "cli/diff/BadInventory.h"
#include "cli/formats/JsonWriter.h"
#include "cli/formats/XmlWriter.h"
#include "cli/system/Failure.h"
#include "tests/cli/Samples.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

using zavtest::oddInventory;
using zavtest::sampleInventory;
using zavtest::ScratchDir;

// "LINE: reason" of a content that is refused.
std::string problemOf(const std::string& content) {
    try {
        parseInventory(content);
    } catch (const BadInventory& bad) {
        return std::to_string(bad.line()) + ": " + bad.what();
    }
    return "not refused";
}

std::string values(const std::vector<Group>& groups) {
    std::string text;
    for (const Group& group : groups) {
        for (const Instance& instance : group.instances) {
            text += group.name + ":";
            for (const Field& field : instance) text += " " + field.name + "=" + field.value;
            text += "\n";
        }
    }
    return text;
}

TEST(InventoryFile, WhatTheJsonWriterWroteIsReadBack) {
    for (const HardwareInventory& inventory : {sampleInventory(), oddInventory()}) {
        const SavedInventory saved = parseInventory(jsonText(inventory));
        EXPECT_EQ(values(inventory.groups), values(saved.groups));
        EXPECT_EQ("2026-11-21T06:14:45Z", saved.time);
    }
    EXPECT_FALSE(parseInventory(jsonText(sampleInventory())).ofTree);
    EXPECT_TRUE(parseInventory(jsonText(oddInventory())).ofTree);
}

TEST(InventoryFile, GroupsWithoutInstancesAreReadFromJson) {
    const SavedInventory saved = parseInventory(jsonText(sampleInventory()));
    ASSERT_NE(nullptr, saved.find("Modem"));
    EXPECT_TRUE(saved.find("Modem")->instances.empty());
    EXPECT_EQ(nullptr, saved.find("Keyboard"));
}

TEST(InventoryFile, WhatTheXmlWriterWroteIsReadBack) {
    const SavedInventory saved = parseInventory(xmlText(oddInventory()));
    const Instance& memory = saved.find("Memory")->instances.at(0);
    EXPECT_EQ("one\ntwo\r\nthree", valueOf(memory, "Lines"));
    EXPECT_EQ("]]> &amp; <!-- -->", valueOf(memory, "Markup"));
    EXPECT_EQ("  x  ", valueOf(memory, "Blanks"));
}

TEST(InventoryFile, TheScannersReportSaysWhichGroupsHaveNoInstances) {
    const SavedInventory saved = parseInventory(
        "<Hardware><Memory><DeviceID>memory</DeviceID></Memory><ScanInfo><StartTime>2026-01-02T03:04:05Z"
        "</StartTime><Privileged>false</Privileged><RootPath>/mnt</RootPath>"
        "<GroupsRequested>Memory;Modem;SMBIOS</GroupsRequested><GroupsComplete>Memory;Modem</GroupsComplete>"
        "<GroupsUnread>SMBIOS=permission</GroupsUnread></ScanInfo></Hardware>");
    EXPECT_EQ("2026-01-02T03:04:05Z", saved.time);
    EXPECT_EQ(false, saved.privileged);
    EXPECT_TRUE(saved.ofTree);
    EXPECT_EQ(nullptr, saved.find("ScanInfo")) << "it describes the scan";
    ASSERT_TRUE(saved.find("Modem") != nullptr && saved.find("SMBIOS") != nullptr);
    EXPECT_EQ(GroupState::Complete, saved.find("Modem")->status.state);
    EXPECT_EQ(GroupState::Unread, saved.find("SMBIOS")->status.state);
    EXPECT_EQ("permission", saved.find("SMBIOS")->status.reason);
}

TEST(InventoryFile, StatusesAndRightsAreReadFromJson) {
    const SavedInventory saved = parseInventory(
        R"({"scan": {"privileged": true}, "status": {"Memory": {"status": "partial", "reason": "timeout"}},
            "groups": {"Memory": []}})");
    EXPECT_EQ(true, saved.privileged);
    EXPECT_EQ(GroupState::Partial, saved.find("Memory")->status.state);
    EXPECT_EQ("timeout", saved.find("Memory")->status.reason);
}

TEST(InventoryFile, HashesInsteadOfPrivateValuesAreRecognised) {
    const auto withName = [](const std::string& name) {
        return parseInventory("<Hardware><ComponentID><Name>" + name +
                              "</Name><Family>0123456789abcdef</Family></ComponentID>"
                              "<LogicalDrive><Root>/</Root></LogicalDrive></Hardware>");
    };
    EXPECT_TRUE(withName("0123456789abcdef").sanitized);
    EXPECT_FALSE(withName("host").sanitized);
    EXPECT_FALSE(withName("").sanitized)
        << "the product family is not private, and the root directory has no name";
}

TEST(InventoryFile, TypedValuesAreReadAsTexts) {
    const SavedInventory saved = parseInventory(
        R"({"groups": {"Storage": [{"Size": 9223372036854775807, "Zone": -60, "Load": 0.25, "Removable": false,
            "Model": null, "Names": ["a", "b"], "None": []}]}})");
    const Instance& disk = saved.find("Storage")->instances.at(0);
    const std::vector<std::pair<const char*, const char*>> expected{{"Size", "9223372036854775807"},
                                                                    {"Zone", "-60"},
                                                                    {"Load", "0.25"},
                                                                    {"Removable", "false"},
                                                                    {"Model", ""},
                                                                    {"Names", "a;b"},
                                                                    {"None", ""}};
    ASSERT_EQ(expected.size(), disk.size());
    for (const auto& [name, value] : expected) EXPECT_EQ(value, valueOf(disk, name)) << name;
}

TEST(InventoryFile, JsonThatIsNoInventoryIsRefusedWithItsLine) {
    EXPECT_EQ("3: the JSON ends too early", problemOf("{\n\"groups\": {\n"));
    EXPECT_EQ(0U, problemOf("{\n\"groups\":\n{oops}}").find("3: the JSON is not valid at "));
    EXPECT_EQ("0: this is no hardware inventory: it has no \"groups\"", problemOf(R"({"results": []})"));
    EXPECT_EQ("2: there is an object instead of a text for \"Size\"",
              problemOf("{\"groups\": {\"Storage\": [\n{\"Size\": {}}]}}"));
    EXPECT_EQ("1: there is a number instead of an object or an array",
              problemOf(R"({"groups": {"Storage": [5]}})"));
    EXPECT_EQ("1: there is an array instead of an object or a text",
              problemOf(R"({"groups": {"Storage": [{"Size": [[5]]}]}})"));
    EXPECT_EQ("2: there is an object instead of an array of instances for \"Storage\"",
              problemOf("{\"groups\":\n{\"Storage\": {}}}"));
    EXPECT_EQ("1: there is an array instead of an object or a text for \"groups\"",
              problemOf(R"({"groups": []})"));
    EXPECT_EQ("1: the JSON is nested too deep", problemOf("{\"x\": " + std::string(1000, '[')));
}

TEST(InventoryFile, XmlThatIsNoInventoryIsRefusedWithItsLine) {
    EXPECT_EQ("1: this is no hardware inventory: the root element is <MatchedSignatures>",
              problemOf("<MatchedSignatures/>"));
    EXPECT_EQ("3: the XML is not well-formed: mismatched tag",
              problemOf("<Hardware>\n<Memory>\n</Hardware>"));
    EXPECT_EQ("2: the element <b> is within a field",
              problemOf("<Hardware>\n<Memory><Name><b/></Name></Memory></Hardware>"));
    EXPECT_EQ("2: there is text beside the elements", problemOf("<Hardware>\n<Memory>x</Memory></Hardware>"));
}

TEST(InventoryFile, OtherContentIsRefused) {
    EXPECT_EQ("0: the file is empty", problemOf(""));
    EXPECT_EQ(0U, problemOf("OperatingSystem\n  Name linux\n").find("1: this is neither JSON nor XML"));
    EXPECT_EQ(0U, problemOf(" \n").find("1: this is neither JSON nor XML"));
}

TEST(InventoryFile, AFileThatIsTooLargeIsRefused) {
    const ScratchDir scratch;
    const std::string path = scratch.write("huge.json", "{").string();
    std::filesystem::resize_file(path, kMaxInventorySize + 1);
    try {
        readSavedInventory(path);
        FAIL() << "not refused";
    } catch (const Failure& failure) {
        EXPECT_EQ("cannot read '" + path + "': it is larger than 256 MiB", std::string(failure.what()));
    }
}

}  // namespace
}  // namespace zavcli
