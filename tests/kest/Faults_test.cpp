// Every system call on the way of a child fails once.
#include "tests/kest/Faults.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <csignal>
#include <new>
#include <utility>

#include "kest/Descriptor.h"
#include "kest/Runtime.h"
#include "kest/Text.h"
#include "tests/kest/Children.h"

namespace kest::test {
namespace {

class FaultTest : public testing::Test {
  protected:
    static void expectNotStarted(const char* function, int error) {
        const NothingLeft nothingLeft;
        const Fault fault(function, error);
        EXPECT_EQ(launch(command), nullptr) << function;
        EXPECT_TRUE(Fault::happened()) << function;
    }

    static void expectBadAlloc(const char* function) {
        const NothingLeft nothingLeft;
        const Fault fault(function, ENOMEM);
        EXPECT_THROW(launch(command), std::bad_alloc) << function;
        EXPECT_TRUE(Fault::happened()) << function;
    }

    static inline const std::string command = child("WriteLines") + " 2";
};

const Outcome twoLines = {"line 0\nline 1\n", 0};

TEST_F(FaultTest, ALaunchWithoutAPipeFails) {
    expectNotStarted("pipe2", EMFILE);
    expectNotStarted("pipe2", ENFILE);
}

TEST_F(FaultTest, ALaunchWithoutAProcessFails) {
    expectNotStarted("posix_spawn", EAGAIN);
    expectNotStarted("posix_spawn", EPERM);
}

TEST_F(FaultTest, ALaunchThatCannotBePreparedFails) {
    expectNotStarted("posix_spawn_file_actions_adddup2", EBADF);
    expectNotStarted("posix_spawnattr_setflags", EINVAL);
}

TEST_F(FaultTest, ALaunchWithoutMemoryInTheSystemThrows) {
    for (const char* const function :
         {"pipe2", "posix_spawn", "posix_spawn_file_actions_adddup2",
          "posix_spawn_file_actions_addclosefrom_np", "posix_spawn_file_actions_addopen"}) {
        expectBadAlloc(function);
    }
}

TEST_F(FaultTest, ALaunchWithoutMemoryInTheHostThrows) {
    const String wide(widen(command));
    int successes = 0;
    for (bool launched = false; !launched; ++successes) {
        const NothingLeft nothingLeft;
        std::unique_ptr<ChildProcess> process;
        const AllocationFault fault(successes);
        try {
            process.reset(Runtime().launch(wide, "A=1\0B=2\0\0"));
            launched = true;
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(AllocationFault::happened());
        }
    }
    EXPECT_GT(successes, 5);
}

// The pipe is born as 0 and has to be moved.
TEST_F(FaultTest, ALaunchWhosePipeCannotBeMovedFails) {
    const Descriptor input(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, reinterpret_cast<void*>(3)));
    close(STDIN_FILENO);
    expectNotStarted("fcntl", EMFILE);
    EXPECT_EQ(run(command), twoLines);
    if (input.isOpen()) {
        EXPECT_EQ(dup2(input.number(), STDIN_FILENO), STDIN_FILENO);
    }
}

TEST_F(FaultTest, AnInterruptedReadingGoesOn) {
    const NothingLeft nothingLeft;
    const Fault fault("read", EINTR, 3);
    EXPECT_EQ(run(command), twoLines);
    EXPECT_TRUE(Fault::happened());
}

TEST_F(FaultTest, AFailedReadingIsTheEndOfTheOutput) {
    const NothingLeft nothingLeft;
    const std::unique_ptr<ChildProcess> process = launch(child("WriteForever"));
    ASSERT_NE(process, nullptr);
    EXPECT_FALSE(process->getOutputStream()->readSome().empty());
    const Fault fault("read", EIO);
    EXPECT_EQ(process->getOutputStream()->readSome(), "");
    EXPECT_TRUE(Fault::happened());
    EXPECT_EQ(process->getOutputStream()->read(), -1);
    EXPECT_EQ(process->waitFor(), 128 + SIGPIPE);
}

TEST_F(FaultTest, AnInterruptedWaitingGoesOn) {
    const NothingLeft nothingLeft;
    const Fault fault("waitid", EINTR, 3);
    EXPECT_EQ(run(child("ExitWith") + " 7").status, 7);
    EXPECT_TRUE(Fault::happened());
}

TEST_F(FaultTest, AChildWithoutAPidDescriptorIsWaitedForByItsNumber) {
    for (const int error : {ENOSYS, EMFILE}) {
        const NothingLeft nothingLeft;
        const Fault fault("pidfd_open", error);
        EXPECT_EQ(run(child("ExitWith") + " 7").status, 7);
        EXPECT_TRUE(Fault::happened());
    }
}

TEST_F(FaultTest, ATakenStatusIsUnknownWithoutAPidDescriptor) {
    const NothingLeft nothingLeft;
    const Fault fault("pidfd_open", ENOSYS);
    const std::unique_ptr<ChildProcess> process = launch(child("ExitWith") + " 7");
    ASSERT_NE(process, nullptr);
    ASSERT_GT(waitpid(-1, nullptr, 0), 0);
    EXPECT_EQ(process->waitFor(), -1);
    EXPECT_EQ(process->exitValue(), -1);
}

TEST_F(FaultTest, ATakenStatusIsUnknownWhereTheKernelForgetsIt) {
    const std::pair<int, int> answers[] = {{ENOTTY, 1}, {EINVAL, 1}, {ESRCH, 3}};
    for (const auto& [error, times] : answers) {
        const NothingLeft nothingLeft;
        const std::unique_ptr<ChildProcess> process = launch(child("ExitWith") + " 7");
        ASSERT_NE(process, nullptr);
        ASSERT_GT(waitpid(-1, nullptr, 0), 0);
        const Fault fault("ioctl", error, times);
        EXPECT_EQ(process->waitFor(), -1) << error;
        EXPECT_TRUE(Fault::happened());
    }
}

TEST_F(FaultTest, AStatusThatIsNotFiledYetIsAskedForAgain) {
    const NothingLeft nothingLeft;
    const std::unique_ptr<ChildProcess> process = launch(child("ExitWith") + " 7");
    ASSERT_NE(process, nullptr);
    ASSERT_GT(waitpid(-1, nullptr, 0), 0);
    const Fault gone("ioctl", ESRCH, 2);
    const int status = process->waitFor();
    EXPECT_TRUE(Fault::happened());
    EXPECT_TRUE(status == 7 || status == -1) << status;
}

TEST_F(FaultTest, AStatusThatIsJustBeingTakenIsAskedForAgain) {
    const NothingLeft nothingLeft;
    const std::unique_ptr<ChildProcess> process = launch(child("ExitWith") + " 7");
    ASSERT_NE(process, nullptr);
    ASSERT_GT(waitpid(-1, nullptr, 0), 0);
    const Fault tellsNothing("ioctl", EAGAIN, 2);
    const int status = process->waitFor();
    EXPECT_TRUE(Fault::happened());
    EXPECT_TRUE(status == 7 || status == -1) << status;
}

}  // namespace
}  // namespace kest::test
