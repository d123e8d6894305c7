// Every system call that starting and running a child needs fails once.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <new>
#include <vector>

#include "kest/Descriptor.h"
#include "kest/MemorySharing.linux.h"
#include "kest/Runtime.h"
#include "kest/Text.h"
#include "tests/kest/Children.h"
#include "tests/support/Allocations.h"
#include "tests/support/Faults.h"

namespace kest::test {
namespace {

using zavtest::Fault;

class FaultTest : public testing::Test {
  protected:
    static void expectNotStarted(const char* function, int error) {
        const NothingLeft nothingLeft;
        const Fault fault(function, error);
        EXPECT_EQ(launch(command), nullptr) << function;
        EXPECT_TRUE(fault.happened()) << function;
    }

    static void expectBadAlloc(const char* function) {
        const NothingLeft nothingLeft;
        const Fault fault(function, ENOMEM);
        EXPECT_THROW(launch(command), std::bad_alloc) << function;
        EXPECT_TRUE(fault.happened()) << function;
    }

    static inline const std::string command = child("WriteLines") + " 2";
};

const Outcome twoLines = {"line 0\nline 1\n", 0};

TEST_F(FaultTest, ALaunchWithoutAPipeFails) {
    expectNotStarted("pipe2", EMFILE);
    expectNotStarted("pipe2", ENFILE);
}

TEST_F(FaultTest, ALaunchWithoutAProcessFails) {
    expectNotStarted("clone", EAGAIN);
    expectNotStarted("posix_spawn", EAGAIN);
    expectNotStarted("posix_spawn", EPERM);
}

// The keeper believes that its host has ended.
TEST_F(FaultTest, ALaunchWhoseKeeperEndsAtOnceFails) {
    expectNotStarted("getppid", ESRCH);
}

TEST_F(FaultTest, WhereTheKeeperCannotShareTheMemoryItHasACopy) {
    const int kinds = canShareMemory() ? 3 : 2;
    for (int refusals = 1; refusals < kinds; ++refusals) {
        const NothingLeft nothingLeft;
        {
            const Fault fault("clone", EINVAL, 1, refusals);
            EXPECT_EQ(run(command), twoLines);
            EXPECT_TRUE(fault.happened());
        }
        const Fault fault("clone", EINVAL, 1, refusals);
        EXPECT_EQ(launch("/nonexistent"), nullptr);
    }
    const Fault fault("clone", EINVAL, 1, kinds);
    EXPECT_EQ(launch(command), nullptr);
}

TEST_F(FaultTest, ALaunchThatCannotBePreparedFails) {
    expectNotStarted("posix_spawn_file_actions_adddup2", EBADF);
    expectNotStarted("posix_spawnattr_setflags", EINVAL);
}

TEST_F(FaultTest, ALaunchWithoutMemoryInTheSystemThrows) {
    for (const char* const function :
         {"pipe2", "clone", "posix_spawn", "posix_spawn_file_actions_adddup2",
          "posix_spawn_file_actions_addclosefrom_np", "posix_spawn_file_actions_addopen"}) {
        expectBadAlloc(function);
    }
}

TEST_F(FaultTest, ALaunchWithoutMemoryInTheHostThrows) {
    const String wide(widen(command));
    int nth = 1;
    for (bool launched = false; !launched; ++nth) {
        const NothingLeft nothingLeft;
        std::unique_ptr<ChildProcess> process;
        const zavtest::FailingAllocation fault(nth);
        try {
            process.reset(Runtime().launch(wide, "A=1\0B=2\0\0"));
            launched = true;
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(fault.happened());
        }
    }
    EXPECT_GT(nth, 6);
}

TEST_F(FaultTest, ALaunchFailsWhereAStandardStreamThatTheHostClosedCannotBeKeptFree) {
    const Descriptor input(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 3));
    close(STDIN_FILENO);
    expectNotStarted("open", EMFILE);
    EXPECT_EQ(run(command), twoLines);
    if (input.isOpen()) {
        EXPECT_EQ(dup2(input.number(), STDIN_FILENO), STDIN_FILENO);
    }
}

TEST_F(FaultTest, AnInterruptedReadingGoesOn) {
    for (const char* const function : {"read", "SYS_read"}) {
        const NothingLeft nothingLeft;
        const Fault fault(function, EINTR, 1, 3);
        EXPECT_EQ(run(command), twoLines) << function;
        EXPECT_TRUE(fault.happened()) << function;
    }
}

TEST_F(FaultTest, AReadErrorEndsTheOutput) {
    const NothingLeft nothingLeft;
    const std::unique_ptr<ChildProcess> process = launch(child("WriteForever"));
    ASSERT_NE(process, nullptr);
    EXPECT_FALSE(process->getOutputStream()->readSome().empty());
    const Fault fault("read", EIO);
    EXPECT_EQ(process->getOutputStream()->readSome(), "");
    EXPECT_TRUE(fault.happened());
    EXPECT_EQ(process->getOutputStream()->read(), -1);
    EXPECT_EQ(process->waitFor(), 128 + SIGPIPE);
}

TEST_F(FaultTest, AnInterruptedWaitingGoesOn) {
    const NothingLeft nothingLeft;
    const Fault fault("SYS_waitid", EINTR, 1, 3);
    EXPECT_EQ(run(child("ExitWith") + " 7").status, 7);
    EXPECT_TRUE(fault.happened());
}

TEST_F(FaultTest, AStatusThatCannotBeHadIsUnknown) {
    const NothingLeft nothingLeft;
    const Fault fault("SYS_waitid", ECHILD);
    EXPECT_EQ(run(child("ExitWith") + " 7").status, -1);
    EXPECT_TRUE(fault.happened());
}

TEST_F(FaultTest, TheOutputIsReadEvenIfPollFails) {
    const NothingLeft nothingLeft;
    const Fault fault("poll", ENOMEM);
    EXPECT_EQ(run(command), twoLines);
    EXPECT_TRUE(fault.happened());
}

// A process that is forked while the host has the writing ends of the pipes keeps them open.
TEST_F(FaultTest, AProcessThatTheHostForksDuringTheRunDoesNotDelayIt) {
    const NothingLeft nothingLeft;
    std::vector<pid_t> forked;
    {
        const zavtest::BeforeClone fork([&forked] {
            const pid_t pid = ::fork();
            if (pid == 0) {
                for (;;) pause();
            }
            forked.push_back(pid);
        });
        EXPECT_EQ(run(command), twoLines);
        EXPECT_EQ(run(child("ExitWith") + " 7"), (Outcome{"", 7}));
        EXPECT_EQ(launch("/nonexistent"), nullptr);
    }
    EXPECT_EQ(forked.size(), 3U);
    for (const pid_t pid : forked) {
        EXPECT_EQ(kill(pid, SIGKILL), 0);
        EXPECT_EQ(waitpid(pid, nullptr, 0), pid);
    }
}

}  // namespace
}  // namespace kest::test
