#include "toolkit/quorvah/scan/GatherGroup.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/scan/FakeGroups.h"

namespace toolkit::quorvah::fakes {
namespace {

TEST(GatherGroup, AGroupThatSearchesTheTreeForeverKeepsItsInstances) {
    const Limits limits{milliseconds(300), milliseconds(5000)};
    for (const Group* const group : {&kSearchForever, &kSearchForeverInOneInstance}) {
        const std::vector<GroupResult> results = run({group, &kQuick}, limits);
        ASSERT_EQ(2U, results.size());
        EXPECT_EQ(GroupState::Partial, results[0].state);
        EXPECT_EQ("timeout", results[0].reason);
        EXPECT_EQ(1U, results[0].instances);
        EXPECT_NE(std::string::npos, results[0].xml.find("kept"));
        EXPECT_EQ(kQuickXml, results[1].xml);
    }
}

TEST(GatherGroup, AFileBeyondTheLimitMakesAGroupPartial) {
    const zavtest::ScratchDir dir;
    dir.write("line", std::string(Root::kLineLimit + 1, 'x'));
    Options options;
    options.root = dir.path().string();
    const std::vector<GroupResult> results = run({&kReadHugeLine, &kQuick}, Limits(), options);
    EXPECT_EQ(GroupState::Partial, results.front().state);
    EXPECT_EQ("too-large", results.front().reason);
    EXPECT_EQ(GroupState::Complete, results.back().state);
}

TEST(GatherGroup, AnEndlessGroupKeepsItsInstancesUpToTheLimits) {
    const std::vector<GroupResult> results = run({&kAddForever, &kWriteForever, &kQuick});
    ASSERT_EQ(3U, results.size());
    EXPECT_EQ(GroupData::kMaxInstances, results[0].instances);
    EXPECT_EQ("too-large", results[0].reason);
    EXPECT_LE(results[1].instances * 60'000, GroupData::kMaxBytes);
    EXPECT_GT(results[1].instances, 1000U);
    EXPECT_EQ("too-large", results[1].reason);
    EXPECT_EQ(kQuickXml, results[2].xml);
}

TEST(GatherGroup, AnExceptionKeepsTheInstancesAndBecomesAWarning) {
    const std::vector<GroupResult> results = run({&kFail, &kQuick});
    EXPECT_EQ(results[0].reason, "failed");
    EXPECT_EQ(results[0].instances, 1U);
    EXPECT_EQ(results[0].warnings, (std::vector<std::string>{"Fail: no such luck"}));
    EXPECT_EQ(results[1].reason, "");
}

TEST(GatherGroup, AGroupWithoutCodeIsUnsupported) {
    const std::vector<GroupResult> results = run({&kUnsupported});
    EXPECT_EQ(results[0].state, GroupState::Unsupported);
    EXPECT_EQ(results[0].reason, "unsupported");
    EXPECT_EQ(results[0].instances, 0U);
}

TEST(GatherGroup, AGroupOfAnotherPlatformIsNotApplicable) {
    const std::vector<GroupResult> results = run({&kOnOtherPlatform});
    EXPECT_EQ(results[0].state, GroupState::NotApplicable);
    EXPECT_EQ(results[0].reason, "windows");
}

TEST(GatherGroup, AReasonMeansPartialWithInstancesAndUnreadWithout) {
    const std::vector<GroupResult> results =
        run({&kQuick, &kFail, &kTwoReasons, &kHang}, {milliseconds(300), milliseconds(60000)});
    EXPECT_EQ(results[0].state, GroupState::Complete);
    EXPECT_EQ(results[1].state, GroupState::Partial);
    EXPECT_EQ(results[2].state, GroupState::Unread);
    EXPECT_EQ(results[2].reason, "broken") << "the first reason stands";
    EXPECT_EQ(results[3].state, GroupState::Unread);
    EXPECT_EQ(results[3].reason, "timeout");
}

TEST(GatherGroup, AnEmptyGroupWithoutItsSourcesIsNotComplete) {
    const zavtest::ScratchDir tree;
    Options options;
    options.root = tree.path().string();
    EXPECT_EQ(run({&kWithSource}, Limits(), options)[0].state, GroupState::NotApplicable);
    EXPECT_EQ(run({&kWithSource}, Limits(), options)[0].reason, "not-in-tree");
    EXPECT_EQ(run({&kWithSource})[0].state, GroupState::Unread) << "this machine should have it";
    EXPECT_EQ(run({&kWithSource})[0].reason, "no-source");
    tree.write("no/such/source/x", "");
    EXPECT_EQ(run({&kWithSource}, Limits(), options)[0].state, GroupState::Complete);
}

TEST(GatherGroup, ADeniedPermissionAffectsOneGroupOnly) {
    const zavtest::ScratchDir dir;
    std::filesystem::permissions(dir.write("secret", "x\n"), std::filesystem::perms::none);
    std::filesystem::permissions(dir.path(), std::filesystem::perms(0755));
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
        Options options;
        options.root = dir.path().string();
        const std::vector<GroupResult> results = run({&kUnreadable, &kQuick}, Limits(), options);
        const bool first = results[0].reason == "permission" && results[0].instances == 1 &&
                           results[0].xml == "<Unreadable><DeviceID>kept</DeviceID><Value/></Unreadable>";
        _exit(first && results[1].reason.empty() ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
}

}  // namespace
}  // namespace toolkit::quorvah::fakes
