#include "cli/scan/GroupNames.h"

#include <gtest/gtest.h>

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

TEST(GroupNames, EverySpellingIsFound) {
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

TEST(GroupNames, UnknownNamesAreNotFound) {
    for (const char* text :
         {"", "Processors", "0", "-2", "17", "99", "2 ", "99999999999999999999", "Mem", "*"})
        EXPECT_FALSE(findGroup(kGroups, text)) << text;
}

TEST(GroupNames, SimilarNamesAreSortedBySimilarity) {
    using Names = std::vector<std::string>;
    EXPECT_EQ((Names{"Processor"}), similarGroups(kGroups, "Procesor"));
    EXPECT_EQ((Names{"Memory", "MemoryModules"}), similarGroups(kGroups, "memor"));
    EXPECT_EQ((Names{"MemoryModules"}), similarGroups(kGroups, "modules"));
    EXPECT_EQ((Names{}), similarGroups(kGroups, "zebra"));
    EXPECT_EQ((Names{}), similarGroups(kGroups, ""));
}

TEST(GroupNames, UnknownGroupIsRefusedWithSuggestions) {
    EXPECT_EQ("unknown group 'Procesor'; did you mean Processor? 'zav groups' lists all",
              refusal("Procesor"));
    EXPECT_EQ("unknown group '17'; 'zav groups' lists all", refusal("17"));
}

TEST(GroupNames, AllGroupsAreChosenByDefault) {
    EXPECT_EQ(kGroups.size(), chooseGroups(kGroups, {}).size());
}

TEST(GroupNames, ChosenGroupsKeepTheirOrderWithoutRepetitions) {
    const auto chosen = chooseGroups(kGroups, {"memory", "2", "Processor", "Memory"});
    ASSERT_EQ(2U, chosen.size());
    EXPECT_EQ("Memory", chosen[0].name);
    EXPECT_EQ("Processor", chosen[1].name);
}

}  // namespace
}  // namespace zavcli
