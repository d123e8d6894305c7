#include "toolkit/quorvis/evaluation/WorkerProcess.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <string>

namespace toolkit::quorvis {
namespace {

using std::chrono::seconds;

// Puts bytes into the tail and sends so many of them, of which the tail may or may not know.
void leaveBehind(int pipe, ScanTail& tail, std::size_t sent, bool told) {
    std::memcpy(tail.bytes.data(), "abcdef", 6);
    tail.used = 6;
    if (::write(pipe, tail.bytes.data(), sent) != static_cast<ssize_t>(sent)) ::_exit(8);
    if (!told) return;
    tail.used = 0;
    tail.sent = sent;
}

TEST(WorkerProcess, WhateverItSentWhenItDiesArrivesOnce) {
    const std::pair<std::size_t, bool> cases[] = {{0, false}, {3, false}, {6, false}, {6, true}};
    for (const auto& [sent, told] : cases) {
        WorkerProcess worker([&, sent = sent, told = told](int pipe, ScanTail& tail) {
            leaveBehind(pipe, tail, sent, told);
            ::_exit(7);
        });
        EXPECT_EQ("it ended with status 7", worker.join());
        EXPECT_EQ("abcdef", worker.rest()) << sent << told;
    }
}

TEST(WorkerProcess, OneThatHangsIsKilledAndWhatItHadToldStays) {
    WorkerProcess worker([](int, ScanTail& tail) {
        std::memcpy(tail.bytes.data(), "told", 4);
        tail.used = 4;
        tail.deadline.set(SharedDeadline::Clock::now());
        for (;;) ::pause();
    });
    while (!worker.tail().deadline.isLateBy(std::chrono::milliseconds(1))) {
    }
    worker.kill();
    EXPECT_EQ("told", worker.rest());
}

TEST(WorkerProcess, TellsTheSignalThatEndedIt) {
    WorkerProcess worker([](int, ScanTail&) { ::raise(SIGKILL); });
    EXPECT_EQ("it died of signal 9", worker.join());
}

TEST(WorkerProcess, ItsStandardStreamsAreShut) {
    WorkerProcess worker([](int, ScanTail&) {
        char c = 0;
        const bool shut = ::read(0, &c, 1) == 0 && ::write(1, "x", 1) == 1 && ::isatty(2) == 0;
        ::_exit(shut ? 3 : 4);
    });
    EXPECT_TRUE(worker.waitForInput(seconds(60)));
    EXPECT_EQ("it ended with status 3", worker.join());
}

}  // namespace
}  // namespace toolkit::quorvis
