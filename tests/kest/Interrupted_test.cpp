// Hosts in which SIGCHLD has its default, but something else comes between.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <sys/utsname.h>

#include <cstdio>

#include "kest/Descriptor.h"
#include "tests/kest/Children.h"
#include "tests/kest/SignalHandling.h"

namespace kest::test {
namespace {

// Whether the kernel remembers the exit code of a process that was taken away. (Under valgrind it does not
// even name processes by descriptors.)
bool kernelRemembers() {
    const Descriptor self(static_cast<int>(syscall(SYS_pidfd_open, getpid(), 0)));
    if (!self.isOpen()) return false;
    utsname name = {};
    uname(&name);
    int major = 0;
    int minor = 0;
    EXPECT_EQ(std::sscanf(name.release, "%d.%d", &major, &minor), 2);
    return major > 6 || (major == 6 && minor >= 15);
}

TEST(Interrupted, SignalsDoNotDisturbTheReading) {
    const NothingLeft nothingLeft;
    const int before = SignalStorm::count();
    {
        const SignalStorm storm;
        while (SignalStorm::count() < before + 50) {
            const Outcome outcome = run(child("WriteLines") + " 20000");
            ASSERT_EQ(outcome.status, 0);
            ASSERT_EQ(outcome.output.size(), 20'000 * sizeof("line ") + 88'890);
        }
    }
}

TEST(Interrupted, SignalsDoNotDisturbTheWaiting) {
    const NothingLeft nothingLeft;
    const SignalStorm storm;
    const std::unique_ptr<ChildProcess> process = launch(child("CloseOutputThenExit"));
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(process->getOutputStream()->read(), -1);
    EXPECT_EQ(process->waitFor(), 7);
}

TEST(Interrupted, SignalsDoNotDisturbALineThatTheChildHoldsBack) {
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const SignalStorm storm;
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(process, nullptr);
    EXPECT_EQ(readLine(*process->getOutputStream()), "first");
    std::thread later([&pipe] {
        for (const int start = SignalStorm::count(); SignalStorm::count() < start + 20;)
            std::this_thread::yield();
        openForWriting(pipe);
    });
    EXPECT_EQ(readLine(*process->getOutputStream()), "second");
    EXPECT_EQ(process->waitFor(), 7);
    later.join();
}

TEST(Interrupted, AStatusThatAThreadOfTheHostHasTakenIsFoundAllTheSame) {
    const int known = kernelRemembers() ? 7 : -1;
    const NothingLeft nothingLeft;
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const ReapingThread reaper;
    for (int i = 0; i < 30; ++i) {
        const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
        ASSERT_NE(process, nullptr);
        openForWriting(pipe);
        EXPECT_EQ(readAll(*process->getOutputStream()), "first\nsecond\n");
        const int status = process->waitFor();
        EXPECT_TRUE(status == 7 || status == known) << status;
        EXPECT_EQ(process->exitValue(), status);
    }
}

TEST(Interrupted, AStatusThatTheHostHasTakenIsFoundAllTheSame) {
    const NothingLeft nothingLeft;
    for (const auto& [command, status] : {std::pair("ExitWith", 9), std::pair("EndBySignal", 128 + 9)}) {
        const zavtest::ScratchDir directory;
        const std::unique_ptr<ChildProcess> process = launch(child(command) + " 9");
        ASSERT_NE(process, nullptr);
        EXPECT_EQ(readAll(*process->getOutputStream()), "");
        ASSERT_GT(waitpid(-1, nullptr, 0), 0);
        EXPECT_EQ(process->waitFor(), kernelRemembers() ? status : -1);
        EXPECT_EQ(process->exitValue(), process->waitFor());
    }
}

TEST(Interrupted, AHostMayBeginToIgnoreItsChildrenWhileOneRuns) {
    const NothingLeft nothingLeft;
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const std::unique_ptr<ChildProcess> process = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(process, nullptr);
    const Disposition ignored(SIGCHLD, SIG_IGN, 0);
    openForWriting(pipe);
    EXPECT_EQ(readAll(*process->getOutputStream()), "first\nsecond\n");
    EXPECT_EQ(process->waitFor(), kernelRemembers() ? 7 : -1);
}

}  // namespace
}  // namespace kest::test
