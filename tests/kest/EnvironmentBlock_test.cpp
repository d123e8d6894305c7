#include "kest/EnvironmentBlock.h"

#include <gtest/gtest.h>

#include <string>

namespace kest {
namespace {

using namespace std::string_literals;
using Entries = std::vector<std::string>;

Entries split(const std::string& block) {
    const std::vector<const char*> entries = splitEnvironmentBlock(block.data());
    return {entries.begin(), entries.end()};
}

TEST(EnvironmentBlock, EntriesEndWithANulAndTheBlockWithTwoMore) {
    EXPECT_EQ(split("A=1\0\0\0"s), (Entries{"A=1"}));
    EXPECT_EQ(split("A=1\0B=2\0\0\0"s), (Entries{"A=1", "B=2"}));
}

TEST(EnvironmentBlock, NulsAfterTheEndAreIgnored) {
    EXPECT_EQ(split("A=1\0\0\0\0"s), (Entries{"A=1"}));
    EXPECT_EQ(split("A=1\0\0\0\0B=2\0\0\0"s), (Entries{"A=1"}));
}

TEST(EnvironmentBlock, ASingleEmptyEntryIsPassedOver) {
    EXPECT_EQ(split("A=1\0\0B=2\0\0\0"s), (Entries{"A=1", "B=2"}));
    EXPECT_EQ(split("\0A=1\0\0\0"s), (Entries{"A=1"}));
}

TEST(EnvironmentBlock, EntriesAreTakenAsTheyAre) {
    EXPECT_EQ(split("A\0=1\0A=1\0A=2 \"x\"\n\0\0\0"s), (Entries{"A", "=1", "A=1", "A=2 \"x\"\n"}));
}

TEST(EnvironmentBlock, ABlockOfNulsHasNoEntries) {
    EXPECT_EQ(split("\0\0"s), Entries{});
    EXPECT_EQ(split("\0\0\0"s), Entries{});
}

TEST(EnvironmentBlock, ANullBlockHasNoEntries) {
    EXPECT_TRUE(splitEnvironmentBlock(nullptr).empty());
}

}  // namespace
}  // namespace kest
