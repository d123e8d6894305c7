// Hosts whose state a test executable cannot have itself. They are programs in children/ that use the library.
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include "tests/kest/Children.h"

namespace kest::test {
namespace {

// The descriptors that the children of a host report when the host has closed the streams in `closed`.
std::string descriptorsOfChildren(const std::string& closed, const std::string& sigchld) {
    const zavtest::ScratchDir directory;
    const std::string result = directory.path() / "result";
    const std::string arguments =
        " \"" + closed + "\" " + sigchld + " " + child("ShowDescriptors") + " " + result;
    EXPECT_EQ(run(child("DeprivedHost") + arguments).status, 0);
    return zavtest::readAll(result);
}

class DeprivedHost : public testing::TestWithParam<const char*> {};

TEST_P(DeprivedHost, ItsChildrenHaveAllStreamsWithoutItsStandardInputOrOutput) {
    const std::string complete = descriptorsOfChildren("", GetParam());
    EXPECT_EQ(complete.find("0 /dev/null\n1 pipe\n2 "), 0U) << complete;
    for (const char* const closed : {"0", "1", "01"}) {
        EXPECT_EQ(descriptorsOfChildren(closed, GetParam()), complete) << "closed: " << closed;
    }
}

TEST_P(DeprivedHost, WithoutStandardErrorItsChildrenWriteTheirsNowhere) {
    for (const char* const closed : {"2", "02", "12", "012"}) {
        EXPECT_EQ(descriptorsOfChildren(closed, GetParam()), "0 /dev/null\n1 pipe\n2 /dev/null\nstatus 0\n")
            << "closed: " << closed;
    }
}

INSTANTIATE_TEST_SUITE_P(Sigchld, DeprivedHost, testing::Values("default", "ignored"),
                         [](const auto& sigchld) { return std::string(sigchld.param); });

// The test adopts the orphans of its descendants, so it can wait for the keeper.
TEST(VanishingHost, TakesItsKeeperAlong) {
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    EXPECT_EQ(run(child("VanishingHost") + " " + child("WriteLineThenWait") + " " + pipe).status, 0);

    int status = 0;
    ASSERT_GT(waitpid(-1, &status, __WALL), 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), SIGKILL);

    openForWriting(pipe);
    EXPECT_GT(waitpid(-1, nullptr, 0), 0);
    EXPECT_EQ(waitpid(-1, nullptr, __WALL), -1);
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 0), 0);
}

}  // namespace
}  // namespace kest::test
