// Every system call on the way of a kept child fails once.
#include <gtest/gtest.h>

#include <cerrno>
#include <new>

#include "kest/Runtime.h"
#include "kest/Text.h"
#include "tests/kest/Children.h"
#include "tests/kest/Faults.h"
#include "tests/kest/SignalHandling.h"

namespace kest::test {
namespace {

class KeeperFaultTest : public testing::Test {
  protected:
    NothingLeft nothingLeft_;
    NoThreadLeft noThreadLeft_;
    Disposition ignored_{SIGCHLD, SIG_IGN, 0};
};

TEST_F(KeeperFaultTest, ALaunchWithoutAThreadOrAProcessFails) {
    for (const char* const function : {"pthread_create", "clone", "posix_spawn", "pipe2"}) {
        const NothingLeft nothingLeft;
        const Fault fault(function, EAGAIN);
        EXPECT_EQ(launch(child("ExitWith") + " 0"), nullptr) << function;
        EXPECT_TRUE(Fault::happened()) << function;
    }
}

TEST_F(KeeperFaultTest, ALaunchWithoutMemoryInTheSystemThrows) {
    for (const char* const function : {"clone", "posix_spawn", "posix_spawn_file_actions_addopen"}) {
        const NothingLeft nothingLeft;
        const Fault fault(function, ENOMEM);
        EXPECT_THROW(launch(child("ExitWith") + " 0"), std::bad_alloc) << function;
        EXPECT_TRUE(Fault::happened()) << function;
    }
}

TEST_F(KeeperFaultTest, ALaunchWithoutMemoryInTheHostThrows) {
    const String command(widen(child("ExitWith") + " 0"));
    int successes = 0;
    for (bool launched = false; !launched; ++successes) {
        const NothingLeft nothingLeft;
        std::unique_ptr<ChildProcess> process;
        const AllocationFault fault(successes);
        try {
            process.reset(Runtime().launch(command, "A=1\0\0"));
            launched = true;
        } catch (const std::bad_alloc&) {
            EXPECT_TRUE(AllocationFault::happened());
        }
    }
    EXPECT_GT(successes, 5);
}

// The keeper takes its host for gone.
TEST_F(KeeperFaultTest, ALaunchWhoseKeeperEndsAtOnceFails) {
    const Fault fault("getppid", ESRCH);
    EXPECT_EQ(launch(child("ExitWith") + " 0"), nullptr);
    EXPECT_TRUE(Fault::happened());
}

TEST_F(KeeperFaultTest, AnInterruptedWaitingGoesOn) {
    const Fault fault("waitid", EINTR, 3);
    EXPECT_EQ(run(child("ExitWith") + " 7").status, 7);
    EXPECT_TRUE(Fault::happened());
}

TEST_F(KeeperFaultTest, AStatusThatCannotBeHadIsUnknown) {
    const Fault fault("waitid", ECHILD);
    EXPECT_EQ(run(child("ExitWith") + " 7").status, -1);
    EXPECT_TRUE(Fault::happened());
}

}  // namespace
}  // namespace kest::test
