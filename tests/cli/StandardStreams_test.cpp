// Runs the command with standard streams that are closed or full.
#include <gtest/gtest.h>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Arguments = std::vector<std::string>;

class StandardStreamsTest : public testing::Test {
  protected:
    Process zav(Arguments arguments) const {
        return Process(std::move(arguments)).environment("ZAVTEST_OUTPUT", prepared_);
    }
    Arguments hw() const { return {"hw", "--toolkit", scanner("copies")}; }
    // Commands that succeed and commands that print messages.
    std::vector<std::pair<Arguments, int>> commands() const {
        return {{hw(), 0},
                {{"groups"}, 0},
                {{"--help"}, 0},
                {{"hw", "--help"}, 0},
                {{"--version"}, 0},
                {{"sw", "--check", "--toolkit", scanner("answers"), signatures_}, 0},
                {{"sw", "--toolkit", scanner("answers"), signatures_}, 0},
                {{"sw", "--toolkit", scanner("answers"), "--explain", "g", signatures_}, 0},
                {{"hw", "--toolkit", scanner("fails")}, 1},
                {{"doctor", "--toolkit", scanner("fails")}, 1},
                {{"sw", "/no/such/file"}, 2},
                {{"nope"}, 2},
                {{"hw", "--nope"}, 2}};
    }

    ScratchDir scratch_;
    std::string prepared_ = scratch_.write("prepared.xml", kPreparedOutput).string();
    std::string signatures_ =
        scratch_.write("s.xml", "<Signatures><Signature guid=\"g\" name=\"G\"/></Signatures>").string();
};

TEST_F(StandardStreamsTest, ClosedStandardErrorDoesNotChangeTheStatus) {
    for (const auto& [arguments, status] : commands()) {
        const Ended ended = zav(arguments).without({2}).run();
        EXPECT_EQ(status, ended.status) << testing::PrintToString(arguments);
        EXPECT_EQ(0, ended.signal) << testing::PrintToString(arguments);
    }
}

TEST_F(StandardStreamsTest, FullStandardErrorDoesNotStopTheWork) {
    for (const auto& [arguments, status] : commands()) {
        const Ended ended = zav(arguments).errorTo("/dev/full").run();
        EXPECT_EQ(status, ended.status) << testing::PrintToString(arguments);
    }
}

TEST_F(StandardStreamsTest, LostMessageTurnsSuccessIntoFailure) {
    Arguments verbose = hw();
    verbose.emplace_back("-vv");
    const Ended ended = zav(verbose).errorTo("/dev/full").run();
    EXPECT_EQ(1, ended.status);
    EXPECT_EQ(zav(hw()).run().out, ended.out);
    EXPECT_EQ(0, zav(verbose).without({2}).run().status);
}

TEST_F(StandardStreamsTest, ClosedOrFullStandardOutputIsReportedAsAFailure) {
    for (const auto& [arguments, status] : commands()) {
        const Ended closed = zav(arguments).without({1}).run();
        EXPECT_EQ(status == 0 ? 1 : status, closed.status) << testing::PrintToString(arguments);
        EXPECT_NE("", closed.err) << testing::PrintToString(arguments);
        const Ended full = zav(arguments).outputTo("/dev/full").run();
        EXPECT_EQ(status == 0 ? 1 : status, full.status) << testing::PrintToString(arguments);
        EXPECT_NE("", full.err) << testing::PrintToString(arguments);
    }
}

TEST_F(StandardStreamsTest, StatusIsRightWithoutStandardStreams) {
    for (const auto& [arguments, status] : commands()) {
        const Ended ended = zav(arguments).without({0, 1, 2}).run();
        EXPECT_EQ(status == 0 ? 1 : status, ended.status) << testing::PrintToString(arguments);
    }
}

TEST_F(StandardStreamsTest, OutputFileContainsOnlyTheInventoryWithoutStandardStreams) {
    const std::string out = (scratch_.path() / "out").string();
    Arguments arguments = hw();
    arguments.insert(arguments.end(), {"-vv", "--format", "csv", "--output", out});
    EXPECT_EQ(0, zav(arguments).without({0, 1, 2}).run().status);
    const std::string written = readAll(out);
    EXPECT_EQ(0U, written.find("group,instance,")) << written;
    EXPECT_EQ(std::string::npos, written.find("ZAV_init")) << written;
}

}  // namespace
}  // namespace zavtest
