// Hosts that handle their children in different ways.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <vector>

#include "kest/Descriptor.h"
#include "tests/kest/Children.h"
#include "tests/support/SignalHandling.h"
#include "tests/support/Threads.h"

namespace kest::test {
namespace {

void lookAway(int) {}

class KeeperTest : public testing::TestWithParam<zavtest::ChildHandling> {
  private:
    NothingLeft nothingLeft_;
    zavtest::Disposition disposition_{SIGCHLD, GetParam().handler, GetParam().flags};
};

TEST_P(KeeperTest, ReturnsTheStatus) {
    for (const int status : {0, 7, 255}) {
        EXPECT_EQ(run(child("ExitWith") + " " + std::to_string(status)), (Outcome{"", status}));
    }
    EXPECT_EQ(run(child("EndBySignal") + " 15"), (Outcome{"", 128 + 15}));
    EXPECT_EQ(run(child("CloseOutputThenExit")), (Outcome{"", 7}));
}

TEST_P(KeeperTest, DoesNotStartAFileThatIsNotAProgram) {
    const zavtest::ScratchDir directory;
    EXPECT_EQ(launch(directory.path() / "missing"), nullptr);
    EXPECT_EQ(launch(directory.path()), nullptr);
    EXPECT_EQ(launch(makeFile(directory, "no-program", "no program\n", 0755)), nullptr);
    EXPECT_EQ(launch(makeFile(directory, "not-executable", "#!/bin/sh\n", 0644)), nullptr);
}

TEST_P(KeeperTest, DeliversTheOutputToItsEnd) {
    const Outcome outcome = run(child("WriteLines") + " 20000");
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output.size(), 20'000 * sizeof("line ") + 88'890);
}

TEST_P(KeeperTest, DeliversALineWhileTheChildStillRuns) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(readLine(*process->getOutputStream()), "first");
    openForWriting(pipe);
    EXPECT_EQ(readAll(*process->getOutputStream()), "second\n");
    EXPECT_EQ(process->exitValue(), 7);
    EXPECT_EQ(process->waitFor(), 7);
}

TEST_P(KeeperTest, AChildThatStillWritesDoesNotDelayItsDestruction) {
    const std::unique_ptr<ChildProcess> process = launch(child("WriteForever"));
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(process->getOutputStream()->read(), 'm');
}

TEST_P(KeeperTest, TheChildHasNoSignalBlockedOrIgnored) {
    EXPECT_EQ(run(child("ShowSignals")).output, "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_P(KeeperTest, TheChildHasTheStandardStreamsAndNoOtherDescriptor) {
    const Descriptor other(open("/dev/zero", O_RDONLY));
    const std::string output = run(child("ShowDescriptors")).output;
    EXPECT_EQ(output.find("0 /dev/null\n1 pipe\n2 "), 0U) << output;
    EXPECT_EQ(std::count(output.begin(), output.end(), '\n'), 3) << output;
}

// The reader of the test's pipe reaches its end even though a child and its keeper were started while it was open.
TEST_P(KeeperTest, NobodyHoldsTheHostsOwnPipesOpen) {
    const zavtest::ScratchDir directory;
    const std::string namedPipe = makeNamedPipe(directory);
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, 0), 0);
    const Descriptor readEnd(ends[0]);
    Descriptor writeEnd(ends[1]);
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + namedPipe);
    ASSERT_NE(process, nullptr);
    writeEnd.close();
    char byte = 0;
    EXPECT_EQ(read(readEnd.number(), &byte, 1), 0);
    openForWriting(namedPipe);
}

TEST_P(KeeperTest, TheHostsDispositionStaysAsItWas) {
    EXPECT_EQ(run(child("ExitWith") + " 0").status, 0);
    struct sigaction now = {};
    ASSERT_EQ(sigaction(SIGCHLD, nullptr, &now), 0);
    EXPECT_EQ(now.sa_handler, GetParam().handler);
    EXPECT_EQ(now.sa_flags & SA_NOCLDWAIT, GetParam().flags & SA_NOCLDWAIT);
}

TEST_P(KeeperTest, ChildrenOfManyThreadsRunSideBySide) {
    zavtest::inThreads(8, [](int thread) {
        for (int i = 0; i < 10; ++i) {
            const int status = 10 * thread + i;
            EXPECT_EQ(run(child("ExitWith") + " " + std::to_string(status)).status, status);
        }
    });
}

TEST_P(KeeperTest, SignalsDoNotDisturb) {
    const zavtest::SignalStorm storm;
    for (const int before = zavtest::SignalStorm::count(); zavtest::SignalStorm::count() < before + 50;) {
        EXPECT_EQ(run(child("ExitWith") + " 7").status, 7);
    }
    EXPECT_EQ(run(child("CloseOutputThenExit")).status, 7);
}

TEST_P(KeeperTest, AThreadThatReapsEveryChildGetsNone) {
    for (const int options : {0, WNOHANG}) {
        const zavtest::ReapingThread reaper(options);
        for (int i = 0; i < 50; ++i) EXPECT_EQ(run(child("ExitWith") + " 7").status, 7);
        EXPECT_EQ(reaper.count(), 0);
    }
}

TEST_P(KeeperTest, AThreadThatTakesEvenKeepersDoesNotDisturb) {
    for (const int options : {__WALL, __WALL | WNOHANG}) {
        const zavtest::ReapingThread reaper(options);
        for (int i = 0; i < 50; ++i) EXPECT_EQ(run(child("ExitWith") + " 7").status, 7);
    }
}

INSTANTIATE_TEST_SUITE_P(Hosts, KeeperTest,
                         testing::Values(zavtest::ChildHandling{"Usual", SIG_DFL, 0},
                                         zavtest::ChildHandling{"Ignoring", SIG_IGN, 0},
                                         zavtest::ChildHandling{"WithoutZombies", SIG_DFL, SA_NOCLDWAIT},
                                         zavtest::ChildHandling{"ReapingInAHandler", zavtest::reapEveryChild,
                                                                0},
                                         zavtest::ChildHandling{"LookingAway", lookAway, SA_RESTART}),
                         [](const auto& kind) { return kind.param.name; });

// The children of all threads of this process.
std::vector<pid_t> childrenOf(pid_t process) {
    std::vector<pid_t> children;
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream list(thread.path() / "children");
        for (pid_t pid = 0; list >> pid;) children.push_back(pid);
    }
    return children;
}

volatile std::sig_atomic_t handled = 0;

// The test blocks the signal, so only another thread could receive it.
TEST(Keeper, TheHostsHandlersRunOnlyInItsOwnThreads) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const zavtest::Disposition counted(
        SIGUSR1, [](int) { handled = handled + 1; }, 0);
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(process, nullptr);

    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGUSR1);
    ASSERT_EQ(pthread_sigmask(SIG_BLOCK, &signals, nullptr), 0);
    ASSERT_EQ(kill(getpid(), SIGUSR1), 0);
    openForWriting(pipe);
    EXPECT_EQ(readAll(*process->getOutputStream()), "first\nsecond\n");
    EXPECT_EQ(process->waitFor(), 7);
    EXPECT_EQ(handled, 0);
    ASSERT_EQ(pthread_sigmask(SIG_UNBLOCK, &signals, nullptr), 0);
    EXPECT_EQ(handled, 1);
}

TEST(Keeper, TheStatusIsUnknownWhenSomebodyKillsTheKeeper) {
    const NothingLeft nothingLeft;
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(process, nullptr);
    const std::vector<pid_t> keepers = childrenOf(getpid());
    ASSERT_EQ(keepers.size(), 1U);
    ASSERT_EQ(kill(keepers.front(), SIGKILL), 0);
    openForWriting(pipe);
    EXPECT_EQ(readAll(*process->getOutputStream()), "first\nsecond\n");
    EXPECT_EQ(process->waitFor(), -1);
}

}  // namespace
}  // namespace kest::test
