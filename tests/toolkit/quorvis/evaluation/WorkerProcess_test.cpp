#include "toolkit/quorvis/evaluation/WorkerProcess.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>

namespace toolkit::quorvis {
namespace {

using std::chrono::seconds;

// Puts bytes into the output and writes some of them to the pipe, with or without counting them as sent.
void leaveBehind(int pipe, WorkerOutput& output, std::size_t sent, bool counted) {
    std::memcpy(output.bytes.data(), "abcdef", 6);
    output.used = 6;
    if (::write(pipe, output.bytes.data(), sent) != static_cast<ssize_t>(sent)) ::_exit(8);
    if (!counted) return;
    output.used = 0;
    output.sent = sent;
}

TEST(WorkerProcess, EachByteArrivesOnceWheneverItDies) {
    const std::pair<std::size_t, bool> cases[] = {{0, false}, {3, false}, {6, false}, {6, true}};
    for (const auto& [sent, counted] : cases) {
        WorkerProcess worker([&, sent = sent, counted = counted](int pipe, WorkerOutput& output) {
            leaveBehind(pipe, output, sent, counted);
            ::_exit(7);
        });
        EXPECT_EQ("it ended with status 7", worker.join());
        EXPECT_EQ("abcdef", worker.rest()) << sent << counted;
    }
}

TEST(WorkerProcess, AHangingWorkerIsKilledAndItsMessagesAreKept) {
    WorkerProcess worker([](int, WorkerOutput& output) {
        std::memcpy(output.bytes.data(), "told", 4);
        output.used = 4;
        output.deadline.set(SharedDeadline::Clock::now());
        for (;;) ::pause();
    });
    while (!worker.output().deadline.isLateBy(std::chrono::milliseconds(1))) {
    }
    worker.kill();
    EXPECT_EQ("told", worker.rest());
}

TEST(WorkerProcess, ReportsTheSignalThatEndedIt) {
    WorkerProcess worker([](int, WorkerOutput&) { ::raise(SIGKILL); });
    EXPECT_EQ("it died of signal 9", worker.join());
}

TEST(WorkerProcess, HasNoStandardStreams) {
    WorkerProcess worker([](int, WorkerOutput&) {
        char c = 0;
        const bool shut = ::read(0, &c, 1) == 0 && ::write(1, "x", 1) == 1 && ::isatty(2) == 0;
        ::_exit(shut ? 3 : 4);
    });
    EXPECT_TRUE(worker.waitForInput(seconds(60)));
    EXPECT_EQ("it ended with status 3", worker.join());
}

}  // namespace
}  // namespace toolkit::quorvis
