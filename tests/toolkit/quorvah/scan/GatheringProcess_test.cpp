#include "toolkit/quorvah/scan/GatheringProcess.h"

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include "tests/support/RefusedCall.h"
#include "tests/toolkit/quorvah/scan/FakeGroups.h"
#include "toolkit/quorvah/scan/GatheringSandbox.h"

namespace toolkit::quorvah::fakes {
namespace {

TEST(GatheringProcess, AHangingGroupAffectsOnlyItself) {
    const std::vector<GroupResult> results =
        run({&kQuick, &kHang, &kIgnoringSignals, &kQuick}, {milliseconds(300), milliseconds(60000)});
    ASSERT_EQ(results.size(), 4U);
    EXPECT_EQ(results[0].instances, 2U);
    EXPECT_EQ(results[1].reason, "timeout");
    EXPECT_EQ(results[1].instances, 0U);
    EXPECT_EQ(results[2].reason, "timeout");
    EXPECT_EQ(results[3].reason, "");
    EXPECT_EQ(results[3].instances, 2U);
}

TEST(GatheringProcess, ACrashingGroupAffectsOnlyItself) {
    for (const Group* const group : {&kCrash, &kLeave}) {
        const std::vector<GroupResult> results = run({group, &kQuick});
        ASSERT_EQ(results.size(), 2U);
        EXPECT_EQ(results[0].reason, "failed");
        EXPECT_EQ(results[0].instances, 0U);
        EXPECT_EQ(results[1].instances, 2U);
    }
}

#ifndef ZAV_SANITIZED
TEST(GatheringProcess, AGroupThatFillsTheMemoryAffectsOnlyItself) {
    const std::vector<GroupResult> results = run({&kEndlessInstances, &kQuick});
    ASSERT_EQ(results.size(), 2U);
    EXPECT_TRUE(results[0].reason == "memory" || results[0].reason == "too-large") << results[0].reason;
    EXPECT_EQ(results[1].reason, "");
    EXPECT_EQ(results[1].instances, 2U);
}
#endif

#ifndef ZAV_SANITIZED
TEST(GatheringProcess, GroupsCanTalkToTheKernelOnly) {
    const std::vector<GroupResult> results = run({&kReachOut});
    ASSERT_EQ(results.size(), 1U);
    EXPECT_EQ(results[0].instances, 8U);
    EXPECT_EQ(results[0].xml.find("false"), std::string_view::npos) << results[0].xml;
}
#endif

TEST(GatheringProcess, AnIncompleteSandboxEndsTheScanUnlessTheOptionsAllowIt) {
    const int missing = zavtest::whereRefused(SYS_prctl, ENOSYS, [] {
        Options options;
        options.sandboxOptional = true;
        if (run({&kQuick}, Limits(), options)[0].instances != 2) return 1;
        try {
            run({&kQuick});
        } catch (const SandboxIncomplete&) {
            return 0;
        }
        return 2;
    });
    EXPECT_EQ(missing, 0);
}

TEST(GatheringProcess, AGroupThatRunsOutOfMemoryIsUnread) {
    const std::vector<GroupResult> results = run({&kOutOfMemory, &kQuick});
    EXPECT_EQ(results[0].state, GroupState::Unread);
    EXPECT_EQ(results[0].reason, "memory");
    EXPECT_EQ(results[1].state, GroupState::Complete);
}

TEST(GatheringProcess, WhatAGroupPrintsDoesNotReachTheScannersOutput) {
    testing::internal::CaptureStdout();
    const std::vector<GroupResult> results = run({&kTalk});
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(results[0].instances, 1U);
}

TEST(GatheringProcess, NoChildIsLeftBehind) {
    run({&kQuick, &kHang, &kCrash, &kQuick}, {milliseconds(200), milliseconds(60000)});
    pid_t ended = 0;
    for (int tries = 0; tries < 1000 && ended != -1; ++tries) {
        ended = waitpid(-1, nullptr, WNOHANG);
        if (ended == 0) usleep(10000);
    }
    EXPECT_EQ(ended, -1) << "a child still runs";
}

}  // namespace
}  // namespace toolkit::quorvah::fakes
