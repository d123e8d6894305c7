// Hosts that are interrupted by signals or change their handling of SIGCHLD while a child runs.
#include <gtest/gtest.h>

#include <cerrno>

#include "tests/kest/Children.h"
#include "tests/support/SignalHandling.h"

namespace kest::test {
namespace {

TEST(Interrupted, SignalsDoNotDisturbTheReading) {
    const NothingLeft nothingLeft;
    const int before = zavtest::SignalStorm::count();
    {
        const zavtest::SignalStorm storm;
        while (zavtest::SignalStorm::count() < before + 50) {
            const Outcome outcome = run(child("WriteLines") + " 20000");
            ASSERT_EQ(outcome.status, 0);
            ASSERT_EQ(outcome.output.size(), 20'000 * sizeof("line ") + 88'890);
        }
    }
}

TEST(Interrupted, SignalsDoNotDisturbTheWaiting) {
    const NothingLeft nothingLeft;
    const zavtest::SignalStorm storm;
    const std::unique_ptr<ChildProcess> process = launch(child("CloseOutputThenExit"));
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(process->getOutputStream()->read(), -1);
    EXPECT_EQ(process->waitFor(), 7);
}

TEST(Interrupted, SignalsDoNotDisturbALineThatTheChildHoldsBack) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const zavtest::SignalStorm storm;
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(readLine(*process->getOutputStream()), "first");
    std::thread later([&pipe] {
        for (const int start = zavtest::SignalStorm::count(); zavtest::SignalStorm::count() < start + 20;)
            std::this_thread::yield();
        openForWriting(pipe);
    });
    EXPECT_EQ(readLine(*process->getOutputStream()), "second");
    EXPECT_EQ(process->waitFor(), 7);
    later.join();
}

TEST(Interrupted, TheHostCannotReapAnEndedChild) {
    const NothingLeft nothingLeft;
    for (const auto& [command, status] : {std::pair("ExitWith", 9), std::pair("EndBySignal", 128 + 9)}) {
        const std::unique_ptr<ChildProcess> process = launch(child(command) + " 9");
        ASSERT_NE(process, nullptr);
        EXPECT_EQ(readAll(*process->getOutputStream()), "");
        EXPECT_EQ(waitpid(-1, nullptr, 0), -1);
        EXPECT_EQ(errno, ECHILD);
        EXPECT_EQ(process->waitFor(), status);
        EXPECT_EQ(process->exitValue(), status);
    }
}

TEST(Interrupted, AHostMayBeginToIgnoreItsChildrenWhileOneRuns) {
    const NothingLeft nothingLeft;
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(process, nullptr);
    const zavtest::Disposition ignored(SIGCHLD, SIG_IGN, 0);
    openForWriting(pipe);
    EXPECT_EQ(readAll(*process->getOutputStream()), "first\nsecond\n");
    EXPECT_EQ(process->waitFor(), 7);
}

}  // namespace
}  // namespace kest::test
