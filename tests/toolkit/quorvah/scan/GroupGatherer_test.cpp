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
        run({&kQuick, &kHang, &kQuick}, {milliseconds(60000), milliseconds(300)});
    ASSERT_EQ(results.size(), 3U);
    EXPECT_EQ(results[0].reason, "");
    EXPECT_EQ(results[1].reason, "timeout");
    EXPECT_EQ(results[2].reason, "timeout") << "no time is left for it";
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
