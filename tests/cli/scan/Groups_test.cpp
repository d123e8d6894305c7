#include "cli/scan/Groups.h"

#include <gtest/gtest.h>

#include "cli/formats/GroupWriter.h"
#include "cli/system/Failure.h"

namespace zavcli {
namespace {

const std::vector<GroupName> kGroups{
    {2, "Processor"},          {3, "Memory"},       {4, "OperatingSystem"}, {31, "MemoryModules"},
    {44, "PhysicalProcessor"}, {51, "IPv6Address"},
};

std::string refusal(const std::string& text) {
    try {
        chooseGroups(kGroups, {text});
    } catch (const Failure& failure) {
        EXPECT_EQ(kExitBadUsage, failure.status());
        return failure.what();
    }
    return "not refused";
}

TEST(Groups, AreFoundByEverySpelling) {
    const struct {
        const char* text;
        int id;
    } cases[] = {
        {"Processor", 2},
        {"processor", 2},
        {"PROCESSOR", 2},
        {"2", 2},
        {"OperatingSystem", 4},
        {"Operating System", 4},
        {"operating system", 4},
        {"operating-system", 4},
        {"ipv6 address", 51},
        {"IPv6Address", 51},
        {"51", 51},
    };
    for (const auto& [text, id] : cases) {
        const auto group = findGroup(kGroups, text);
        ASSERT_TRUE(group) << text;
        EXPECT_EQ(id, group->id) << text;
    }
}

TEST(Groups, WhatIsNoGroupIsNotFound) {
    for (const char* text :
         {"", "Processors", "0", "-2", "17", "99", "2 ", "99999999999999999999", "Mem", "*"})
        EXPECT_FALSE(findGroup(kGroups, text)) << text;
}

TEST(Groups, SimilarNamesComeNearestFirst) {
    using Names = std::vector<std::string>;
    EXPECT_EQ((Names{"Processor"}), similarGroups(kGroups, "Procesor"));
    EXPECT_EQ((Names{"Memory", "MemoryModules"}), similarGroups(kGroups, "memor"));
    EXPECT_EQ((Names{"MemoryModules"}), similarGroups(kGroups, "modules"));
    EXPECT_EQ((Names{}), similarGroups(kGroups, "zebra"));
    EXPECT_EQ((Names{}), similarGroups(kGroups, ""));
}

TEST(Groups, UnknownGroupIsRefusedByNameWithSuggestions) {
    EXPECT_EQ("unknown group 'Procesor'; did you mean Processor? 'zav groups' lists all",
              refusal("Procesor"));
    EXPECT_EQ("unknown group '17'; 'zav groups' lists all", refusal("17"));
}

TEST(Groups, NothingWantedMeansAll) {
    EXPECT_EQ(kGroups.size(), chooseGroups(kGroups, {}).size());
}

TEST(Groups, WantedGroupsKeepTheirOrderAndCountOnce) {
    const auto chosen = chooseGroups(kGroups, {"memory", "2", "Processor", "Memory"});
    ASSERT_EQ(2U, chosen.size());
    EXPECT_EQ("Memory", chosen[0].name);
    EXPECT_EQ("Processor", chosen[1].name);
}

TEST(GroupWriter, WritesEveryFormat) {
    const std::vector<ListedGroup> two{{{2, "Processor"}, {GroupState::Complete, ""}},
                                       {{44, "PhysicalProcessor"}, {}}};
    EXPECT_EQ("id  name\n 2  Processor\n44  PhysicalProcessor\n", groupTable(two));
    EXPECT_EQ("id,name,status\r\n2,Processor,gathered\r\n44,PhysicalProcessor,unknown\r\n", groupCsv(two));
    EXPECT_EQ(
        "{\n  \"groups\": [\n    {\n      \"id\": 2,\n      \"name\": \"Processor\",\n      \"status\": "
        "\"gathered\"\n    }\n  ]\n}\n",
        groupJson({two.front()}));
}

TEST(GroupWriter, MarksWhatTheScannerDoesNotGather) {
    const std::vector<ListedGroup> groups{{{2, "Processor"}, {GroupState::Complete, ""}},
                                          {{14, "Printer"}, {GroupState::Unsupported, ""}},
                                          {{40, "WinCluster"}, {GroupState::NotApplicable, "windows"}}};
    EXPECT_EQ(
        "id  name\n 2  Processor\n14  Printer     not implemented by this scanner\n"
        "40  WinCluster  not applicable here: Windows only\n",
        groupTable(groups));
    EXPECT_EQ(
        "id,name,status\r\n2,Processor,gathered\r\n14,Printer,unsupported\r\n40,WinCluster,not-"
        "applicable\r\n",
        groupCsv(groups));
    EXPECT_NE(std::string::npos,
              groupJson(groups).find("\"status\": \"not-applicable\",\n      \"reason\": \"windows\""));
}

TEST(GroupWriter, JsonOfNoGroupsIsAnEmptyArray) {
    EXPECT_EQ("{\n  \"groups\": []\n}\n", groupJson({}));
}

}  // namespace
}  // namespace zavcli
