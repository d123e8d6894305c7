#include "toolkit/quorvah/scan/GroupGatherer.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/scan/FakeGroups.h"

namespace toolkit::quorvah::fakes {
namespace {

TEST(GroupGatherer, ReportsEachGroupInOrder) {
    const std::vector<GroupResult> results = run({&kQuick, &kLarge, &kQuick});
    ASSERT_EQ(results.size(), 3U);
    EXPECT_EQ(results[0].instances, 2U);
    EXPECT_EQ(results[0].xml, kQuickXml);
    EXPECT_EQ(results[0].reason, "");
    EXPECT_EQ(results[1].instances, 3000U);
    EXPECT_EQ(results[2].group, &kQuick);
    EXPECT_TRUE(run({}).empty());
}

TEST(GroupGatherer, TheTimeLimitOfTheRunEndsAllGroups) {
    const std::vector<GroupResult> results =
        run({&kQuick, &kHang, &kHang, &kHang, &kQuick}, {milliseconds(60000), milliseconds(400)});
    ASSERT_EQ(results.size(), 5U);
    EXPECT_EQ(results[0].reason, "");
    for (std::size_t i = 1; i < results.size(); ++i)
        EXPECT_EQ(results[i].reason, "timeout") << "no time is left for group " << i;
}

TEST(GroupGatherer, HangingGroupsDoNotHoldUpTheOthers) {
    const auto start = std::chrono::steady_clock::now();
    const std::vector<GroupResult> results =
        run({&kHang, &kQuick, &kHang, &kHang, &kIgnoringSignals, &kQuick, &kHang, &kLarge},
            {milliseconds(3000), milliseconds(60000)});
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds(10000))
        << "less than one after the other";
    ASSERT_EQ(results.size(), 8U);
    for (const std::size_t i : {0U, 2U, 3U, 4U, 6U}) EXPECT_EQ(results[i].reason, "timeout") << i;
    for (const std::size_t i : {1U, 5U, 7U}) EXPECT_EQ(results[i].reason, "") << i;
    EXPECT_EQ(results[7].instances, 3000U);
}

TEST(GroupGatherer, MoreHangingGroupsThanProcessesAreEndedOneAfterTheOther) {
    std::vector<const Group*> groups(10, &kHang);
    groups.push_back(&kQuick);
    const std::vector<GroupResult> results = run(groups, {milliseconds(2500), milliseconds(60000)});
    ASSERT_EQ(results.size(), 11U);
    for (std::size_t i = 0; i < 10; ++i) EXPECT_EQ(results[i].reason, "timeout") << i;
    EXPECT_EQ(results[10].instances, 2U);
}

TEST(GroupGatherer, GroupsThatEndAllProcessesAreFollowedByNewOnes) {
    const std::vector<GroupResult> results = run({&kQuick, &kLeave, &kCrash, &kLeave, &kCrash, &kQuick});
    ASSERT_EQ(results.size(), 6U);
    for (std::size_t i = 1; i < 5; ++i) EXPECT_EQ(results[i].reason, "failed") << i;
    EXPECT_EQ(results[0].instances, 2U);
    EXPECT_EQ(results[5].instances, 2U);
}

// Many, as a process may end before or after its first group is seen to have begun.
TEST(GroupGatherer, EveryProcessMayEndWithItsFirstGroup) {
    std::vector<const Group*> groups(100, &kLeave);
    groups.push_back(&kQuick);
    for (int round = 0; round < 10; ++round) {
        const std::vector<GroupResult> results = run(groups);
        ASSERT_EQ(results.size(), 101U);
        EXPECT_EQ(results.back().instances, 2U) << round;
    }
}

TEST(GroupGatherer, GroupsOfPlainFilesNeedNoChild) {
    const std::string here = std::to_string(getpid());
    const std::vector<GroupResult> alone = run({&kPlain, &kPlain});
    ASSERT_EQ(alone.size(), 2U);
    for (const GroupResult& result : alone) {
        EXPECT_EQ(result.group, &kPlain);
        EXPECT_EQ(result.instances, 1U);
        EXPECT_EQ(gathererOf(result), here);
    }
    const std::vector<GroupResult> mixed = run({&kPlain, &kQuick});
    ASSERT_EQ(mixed.size(), 2U);
    EXPECT_NE(gathererOf(mixed[0]), here) << "the other group needs a child anyway";
    EXPECT_EQ(mixed[1].xml, kQuickXml);
}

TEST(GroupGatherer, ATreeBelowADirectoryIsAlwaysReadInAChild) {
    const zavtest::ScratchDir dir;
    Options options;
    options.root = dir.path().string();
    const std::vector<GroupResult> results = run({&kPlain}, Limits(), options);
    ASSERT_EQ(results.size(), 1U);
    EXPECT_NE(gathererOf(results[0]), std::to_string(getpid()));
}

TEST(GroupGatherer, AGroupOfPlainFilesThatExceedsItsTimeKeepsItsInstances) {
    const std::vector<GroupResult> results =
        run({&kEndless, &kPlain}, {milliseconds(50), milliseconds(60000)});
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[0].reason, "timeout");
    EXPECT_EQ(results[0].instances, 1U);
    EXPECT_TRUE(results[0].warnings.empty());
    EXPECT_EQ(results[1].reason, "");
    EXPECT_EQ(results[1].instances, 1U);
}

TEST(GroupGatherer, TheTimeLimitOfTheRunEndsGroupsOfPlainFiles) {
    const std::vector<GroupResult> results =
        run({&kEndless, &kPlain}, {milliseconds(60000), milliseconds(50)});
    ASSERT_EQ(results.size(), 2U);
    EXPECT_EQ(results[0].reason, "timeout");
    EXPECT_EQ(results[0].instances, 1U);
    EXPECT_EQ(results[1].reason, "timeout") << "no time is left for it";
    EXPECT_EQ(results[1].instances, 0U);
}

}  // namespace
}  // namespace toolkit::quorvah::fakes
