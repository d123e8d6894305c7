#include "toolkit/machine/sandbox/WorkerProcess.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <string>

namespace toolkit {
namespace {

using Clock = WorkerProcess::Clock;
using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(WorkerProcess, ItsBytesArriveInOrderUntilItEnds) {
    const std::string expected(200'000, 'x');
    WorkerProcess worker([&](int pipe) {
        std::size_t done = 0;
        while (done < expected.size()) {
            const ssize_t count = ::write(pipe, expected.data() + done, expected.size() - done);
            if (count <= 0) ::_exit(8);
            done += static_cast<std::size_t>(count);
        }
        ::_exit(0);
    });
    std::string bytes;
    while (worker.waitForInput(Clock::now() + seconds(60))) {
        const std::string_view piece = worker.receive();
        if (piece.empty()) break;
        bytes += piece;
    }
    EXPECT_EQ(expected, bytes);
    EXPECT_EQ(expected.size(), worker.received());
    EXPECT_EQ("it ended with status 0", worker.join());
}

TEST(WorkerProcess, NothingArrivesBeforeTheDeadlineFromASilentWorker) {
    const WorkerProcess worker([](int) {
        for (;;) ::pause();
    });
    const Clock::time_point deadline = Clock::now() + milliseconds(20);
    EXPECT_FALSE(worker.waitForInput(deadline));
    EXPECT_GE(Clock::now(), deadline);
}

TEST(WorkerProcess, WhatAKilledWorkerWroteIsKept) {
    WorkerProcess worker([](int pipe) {
        if (::write(pipe, "told", 4) != 4) ::_exit(8);
        for (;;) ::pause();
    });
    ASSERT_TRUE(worker.waitForInput(Clock::now() + seconds(60)));
    worker.kill();
    EXPECT_EQ("told", worker.drain());
}

TEST(WorkerProcess, TheDestructorLeavesNoChildBehind) {
    {
        const WorkerProcess worker([](int) {
            for (;;) ::pause();
        });
    }
    EXPECT_EQ(-1, ::waitpid(-1, nullptr, WNOHANG));
    EXPECT_EQ(ECHILD, errno);
}

TEST(WorkerProcess, ReportsTheSignalThatEndedIt) {
    WorkerProcess worker([](int) { ::raise(SIGKILL); });
    EXPECT_EQ("it died of signal 9", worker.join());
}

TEST(WorkerProcess, EndsWithStatus1WhenItsWorkReturns) {
    WorkerProcess worker([](int) {});
    EXPECT_EQ("it ended with status 1", worker.join());
}

TEST(WorkerProcess, HasNoStandardStreams) {
    WorkerProcess worker([](int) {
        char c = 0;
        const bool shut = ::read(0, &c, 1) == 0 && ::write(1, "x", 1) == 1 && ::isatty(2) == 0;
        ::_exit(shut ? 3 : 4);
    });
    EXPECT_TRUE(worker.waitForInput(Clock::now() + seconds(60)));
    EXPECT_EQ("it ended with status 3", worker.join());
}

}  // namespace
}  // namespace toolkit
