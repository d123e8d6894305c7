#include <gtest/gtest.h>

#include "kest/Runtime.h"
#include "kest/Text.h"
#include "tests/kest/Children.h"
#include "tests/support/Threads.h"

namespace kest::test {
namespace {

TEST(Concurrent, EachThreadGetsTheStatusOfItsOwnChildren) {
    const NothingLeft nothingLeft;
    zavtest::inThreads(8, [](int thread) {
        for (int i = 0; i < 20; ++i) {
            const int status = 20 * thread + i;
            EXPECT_EQ(run(child("ExitWith") + " " + std::to_string(status)).status, status);
        }
    });
}

TEST(Concurrent, EachThreadGetsTheOutputOfItsOwnChildren) {
    const NothingLeft nothingLeft;
    zavtest::inThreads(8, [](int thread) {
        for (int i = 0; i < 10; ++i) {
            const std::string argument = std::to_string(thread) + "-" + std::to_string(i);
            EXPECT_EQ(run(child("ShowArguments") + " " + argument), (Outcome{"[" + argument + "]\n", 0}));
        }
    });
}

TEST(Concurrent, ThreadsMayShareARuntime) {
    const NothingLeft nothingLeft;
    Runtime runtime;
    const String command(widen(child("ExitWith") + " 7"));
    zavtest::inThreads(8, [&](int) {
        for (int i = 0; i < 10; ++i) {
            const std::unique_ptr<ChildProcess> process(runtime.launch(command, nullptr));
            ASSERT_NE(process, nullptr);
            EXPECT_EQ(process->waitFor(), 7);
        }
    });
}

TEST(Concurrent, AFailedLaunchDoesNotDisturbOthers) {
    const NothingLeft nothingLeft;
    zavtest::inThreads(8, [](int thread) {
        for (int i = 0; i < 10; ++i) {
            if (thread % 2 == 0) {
                EXPECT_EQ(launch("/nonexistent"), nullptr);
            } else {
                EXPECT_EQ(run(child("WriteLines") + " 2"), (Outcome{"line 0\nline 1\n", 0}));
            }
        }
    });
}

// If a child inherited the pipe of another one, the reader of that pipe would wait for both.
TEST(Concurrent, NoChildHoldsThePipeOfAnother) {
    const NothingLeft nothingLeft;
    const zavtest::ScratchDir directory;
    const std::string pipe = makeNamedPipe(directory);
    const std::unique_ptr<ChildProcess> first = launch(child("WriteLineThenWait") + " " + pipe);
    ASSERT_NE(first, nullptr);
    zavtest::inThreads(4, [](int) { EXPECT_EQ(run(child("WriteLines") + " 1"), (Outcome{"line 0\n", 0})); });
    openForWriting(pipe);
    EXPECT_EQ(readAll(*first->getOutputStream()), "first\nsecond\n");
}

}  // namespace
}  // namespace kest::test
