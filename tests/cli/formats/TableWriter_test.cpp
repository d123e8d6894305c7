#include "cli/formats/TableWriter.h"

#include <gtest/gtest.h>

#include <sstream>

#include "cli/terminal/PrintableText.h"
#include "tests/cli/Samples.h"

namespace zavcli {
namespace {

const GroupStatus kComplete{GroupState::Complete, ""};

HardwareInventory inventoryOf(std::vector<Group> groups) {
    return {{}, std::move(groups)};
}

// A group of that many packages.
Group packages(int count) {
    Group group{25, "SoftwarePackages", {}};
    for (int i = 0; i < count; ++i)
        group.instances.push_back({{"Name", "package" + std::to_string(i)}, {"Format", "dpkg"}});
    return group;
}

// A group of two instances that is wider than the terminal.
Group wide() {
    Group group{29, "PCIDevice", {}};
    for (const char* key : {"a", "b"}) {
        Instance instance{{"DeviceID", key}};
        for (int i = 0; i < 20; ++i)
            instance.push_back({"Field" + std::to_string(i), key + std::string(20, 'x')});
        group.instances.push_back(instance);
    }
    return group;
}

TableStyle style(bool overview, bool everything = false, int columns = 80) {
    return {columns, false, overview, everything};
}

bool contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(TableWriter, OneInstanceIsLinesOfFieldAndValue) {
    const Group group{
        3, "Memory", {{{"DeviceID", "memory"}, {"Empty", ""}, {"TotalVisibleMemorySize", "1024"}}}};
    EXPECT_EQ(
        "Memory\n"
        "  DeviceID                memory\n"
        "  TotalVisibleMemorySize  1 MiB\n"
        "\n",
        tableText(inventoryOf({group}), style(false)));
}

TEST(TableWriter, SeveralInstancesAreATableBelowSharedValues) {
    const Group group{2,
                      "Processor",
                      {{{"DeviceID", "cpu0"}, {"Name", "Good One"}, {"CoreId", "0"}, {"Empty", ""}},
                       {{"DeviceID", "cpu1"}, {"Name", "Good One"}, {"CoreId", ""}, {"Empty", ""}}}};
    EXPECT_EQ(
        "Processor (2)\n"
        "  the same for all:\n"
        "    Name  Good One\n"
        "  DeviceID  CoreId\n"
        "  cpu0      0\n"
        "  cpu1\n"
        "\n",
        tableText(inventoryOf({group}), style(false)));
}

TEST(TableWriter, GroupsWithoutInstancesAreNamedAtTheEnd) {
    const std::string text = tableText(
        inventoryOf({{30, "Modem", {}, kComplete}, {12, "IPXAddress", {}, kComplete}}), style(false));
    EXPECT_EQ("Nothing found for: Modem, IPXAddress.\n", text);
}

TEST(TableWriter, OnlyCompleteGroupsAreReportedAsEmpty) {
    TableStyle wide = style(false);
    wide.columns = 200;
    EXPECT_EQ(
        "Nothing found for: Modem.\n"
        "Nothing found, and the scanner does not report whether it is complete, for: Monitor.\n"
        "Could not be read: SoftwarePackages (the rpm database is damaged).\n"
        "Not applicable here: WinCluster (Windows only).\n"
        "Not implemented by this scanner: Printer.\n",
        tableText(inventoryOf({{14, "Printer", {}, {GroupState::Unsupported, ""}},
                               {25, "SoftwarePackages", {}, {GroupState::Unread, "rpm-broken"}},
                               {30, "Modem", {}, kComplete},
                               {32, "Monitor", {}},
                               {40, "WinCluster", {}, {GroupState::NotApplicable, "windows"}}}),
                  wide));
}

TEST(TableWriter, HeadingOfAnIncompleteGroupHasTheReason) {
    const Group group{3, "Memory", {{{"Size", "1"}}}, {GroupState::Partial, "permission"}};
    EXPECT_EQ("Memory - incomplete: permission denied\n  Size  1\n\n",
              tableText(inventoryOf({group}), style(false)));
}

TEST(TableWriter, InstanceWithoutValuesIsReported) {
    EXPECT_EQ("Monitor\n  no values\n\n", tableText(inventoryOf({{32, "Monitor", {{}}}}), style(false)));
}

TEST(TableWriter, IdenticalInstancesNeedNoTable) {
    const Group group{32, "Monitor", {{{"Name", "x"}}, {{"Name", "x"}}}};
    EXPECT_EQ("Monitor (2)\n  the same for all:\n    Name  x\n\n",
              tableText(inventoryOf({group}), style(false)));
}

TEST(TableWriter, OverviewShortensLongGroupsAndReportsIt) {
    const std::string text = tableText(inventoryOf({packages(800)}), style(true));
    EXPECT_TRUE(contains(text, "SoftwarePackages (800)\n"));
    EXPECT_TRUE(contains(text, "  package9\n  ... and 790 more (--group SoftwarePackages shows all rows)\n"));
    EXPECT_FALSE(contains(text, "package10"));
    EXPECT_TRUE(contains(text, "--all"));
}

TEST(TableWriter, NamedGroupsAndAllAreNotShortened) {
    for (const TableStyle& whole : {style(false), style(true, true)}) {
        const std::string text = tableText(inventoryOf({packages(800)}), whole);
        EXPECT_TRUE(contains(text, "package799\n"));
        EXPECT_FALSE(contains(text, "more"));
        EXPECT_FALSE(contains(text, "--all"));
    }
}

TEST(TableWriter, OverviewBeginsWithTheSystemAndEndsWithTheScanItself) {
    const Instance any{{"Name", "x"}};
    const std::string text = tableText(inventoryOf({{2, "Processor", {any}},
                                                    {20, "ScanInfo", {any}},
                                                    {4, "OperatingSystem", {any}},
                                                    {13, "Video", {any}}}),
                                       style(true));
    EXPECT_LT(text.find("OperatingSystem"), text.find("Processor"));
    EXPECT_LT(text.find("Processor"), text.find("Video"));
    EXPECT_LT(text.find("Video"), text.find("ScanInfo"));
}

TEST(TableWriter, NamedGroupsKeepTheirOrder) {
    const Instance any{{"Name", "x"}};
    const std::string text =
        tableText(inventoryOf({{20, "ScanInfo", {any}}, {4, "OperatingSystem", {any}}}), style(false));
    EXPECT_LT(text.find("ScanInfo"), text.find("OperatingSystem"));
}

TEST(TableWriter, FieldsThatDoNotFitAreNamed) {
    const std::string text = tableText(inventoryOf({wide()}), style(false));
    EXPECT_TRUE(contains(text, "DeviceID  Field0"));
    EXPECT_TRUE(contains(text, "more fields: "));
    EXPECT_TRUE(contains(text, "Field19"));
    EXPECT_TRUE(contains(text, "--all"));
}

TEST(TableWriter, EverythingShowsFieldsThatDoNotFitAsBlocks) {
    const std::string text = tableText(inventoryOf({wide()}), style(false, true));
    EXPECT_TRUE(contains(text, "  [0]\n    DeviceID  a\n"));
    EXPECT_TRUE(contains(text, "    Field19   b" + std::string(20, 'x') + "\n"));
    EXPECT_FALSE(contains(text, "--all"));
}

TEST(TableWriter, EverythingClipsNoCell) {
    const std::string value(60, 'x');
    const Group group{29, "PCIDevice", {{{"A", "1"}, {"B", value}}, {{"A", "2"}, {"B", "y"}}}};
    EXPECT_FALSE(contains(tableText(inventoryOf({group}), style(false)), value));
    EXPECT_TRUE(contains(tableText(inventoryOf({group}), style(false)), "--all"));
    EXPECT_TRUE(contains(tableText(inventoryOf({group}), style(false, true)), value));
}

TEST(TableWriter, LongValuesAreWrappedOrShortenedInTheOverview) {
    std::string flags;
    for (int i = 100; i < 200; ++i) flags += "flag" + std::to_string(i) + " ";
    const HardwareInventory inventory = inventoryOf({{2, "Processor", {{{"Flags", flags}}}}});
    EXPECT_TRUE(contains(tableText(inventory, style(false)), "flag199"));
    const std::string overview = tableText(inventory, style(true));
    EXPECT_FALSE(contains(overview, "flag199"));
    EXPECT_TRUE(contains(overview, "…\n"));
}

TEST(TableWriter, NoLineIsWiderThanTheTerminal) {
    HardwareInventory inventory = zavtest::oddInventory();
    inventory.groups.push_back(wide());
    inventory.groups.push_back(packages(20));
    inventory.groups.push_back({3, "Memory", {{{std::string(90, 'n'), std::string(300, 'v')}}}});
    inventory.groups.push_back({30, "Modem", {}});
    for (const int columns : {40, 57, 80, 132}) {
        for (const bool overview : {false, true}) {
            for (const bool everything : {false, true}) {
                std::istringstream lines(tableText(inventory, style(overview, everything, columns)));
                for (std::string line; std::getline(lines, line);)
                    EXPECT_LE(columnsOf(line), columns) << line;
            }
        }
    }
}

TEST(TableWriter, ControlCharactersDoNotReachTheTerminal) {
    HardwareInventory inventory = zavtest::oddInventory();
    inventory.groups[0].instances.push_back(inventory.groups[0].instances[0]);
    inventory.groups[0].instances.push_back({{"Lines", "\x1b]0;title\x07"}});
    const std::string text = tableText(inventory, style(false));
    for (const char byte : text) EXPECT_TRUE(byte == '\n' || static_cast<unsigned char>(byte) >= 0x20);
}

TEST(TableWriter, HeadingsAreBoldOnlyOnRequest) {
    const HardwareInventory inventory = inventoryOf({packages(1)});
    EXPECT_EQ(0U, tableText(inventory, {80, true, false, false}).find("\x1b[1mSoftwarePackages\x1b[0m\n"));
    EXPECT_FALSE(contains(tableText(inventory, style(false)), "\x1b"));
}

}  // namespace
}  // namespace zavcli
