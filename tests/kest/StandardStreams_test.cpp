// Hosts without standard streams. Each runs in a child of the test, so that the test keeps its own streams.
#include "kest/StandardStreams.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <string>
#include <thread>

#include "tests/support/Child.h"
#include "tests/support/ScratchDir.h"
#include "tests/support/Threads.h"

namespace kest::test {
namespace {

// Whether `holds` is true in a process in which the given standard streams are closed.
template <class Condition>
bool holdsWithout(const std::string& streams, Condition holds) {
    return zavtest::holdsInChild([&] {
        for (const char stream : streams) close(stream - '0');
        return holds();
    });
}

int openNull(int flags) {
    return openAboveStandardStreams([flags] { return ::open("/dev/null", flags | O_CLOEXEC); });
}

bool isClosed(int number) {
    return fcntl(number, F_GETFD) == -1 && errno == EBADF;
}

bool areClosed(const std::string& streams) {
    return std::all_of(streams.begin(), streams.end(), [](char stream) { return isClosed(stream - '0'); });
}

const char* const kSubsets[] = {"", "0", "1", "2", "01", "02", "12", "012"};

TEST(StandardStreams, WhatIsOpenedLiesAboveThem) {
    for (const std::string closed : kSubsets) {
        EXPECT_TRUE(holdsWithout(closed, [] { return openNull(O_RDONLY) > STDERR_FILENO; })) << closed;
    }
}

TEST(StandardStreams, AreAsTheHostLeftThemAfterwards) {
    for (const std::string closed : kSubsets) {
        EXPECT_TRUE(holdsWithout(closed, [&] {
            const int opened = openNull(O_RDONLY);
            return areClosed(closed) && close(opened) == 0 && openNull(O_RDONLY) == opened;
        })) << closed;
    }
}

TEST(StandardStreams, CannotBeReadOrWrittenWhileTheyAreTaken) {
    EXPECT_TRUE(holdsWithout("012", [] {
        const ScopedStreamReservation taken;
        char byte = 'x';
        const bool unwritable = write(STDOUT_FILENO, &byte, 1) == -1 && errno == EBADF;
        return taken.error() == 0 && unwritable && read(STDIN_FILENO, &byte, 1) == -1 && errno == EBADF;
    }));
}

TEST(StandardStreams, AreNotTheHostsWhileTheyAreTaken) {
    EXPECT_TRUE(holdsWithout("12", [] {
        const ScopedStreamReservation taken;
        return hostHasStream(0) && !hostHasStream(1) && !hostHasStream(2);
    }));
}

TEST(StandardStreams, StayWhenTheHostOpensThemDuringAReservation) {
    EXPECT_TRUE(holdsWithout("012", [] {
        {
            const ScopedStreamReservation taken;
            dup2(::open("/dev/null", O_WRONLY), STDERR_FILENO);
        }
        return areClosed("01") && hostHasStream(2) && write(STDERR_FILENO, "x", 1) == 1;
    }));
}

TEST(StandardStreams, AreNotUsedWhenTheDescriptorLimitIsReached) {
    EXPECT_TRUE(holdsWithout("012", [] {
        rlimit none = {};
        getrlimit(RLIMIT_NOFILE, &none);
        none.rlim_cur = 3;
        setrlimit(RLIMIT_NOFILE, &none);
        errno = 0;
        return openNull(O_RDONLY) == -1 && errno == EMFILE && areClosed("012");
    }));
}

TEST(StandardStreams, AreFreeInAChildThatIsForkedWhileTheyAreTaken) {
    EXPECT_TRUE(holdsWithout("012", [] {
        std::atomic<bool> over = false;
        std::thread opener([&over] {
            while (!over) close(openNull(O_RDONLY));
        });
        bool good = true;
        for (int round = 0; round < 200 && good; ++round) {
            good =
                zavtest::holdsInChild([] { return areClosed("012") && openNull(O_RDONLY) > STDERR_FILENO; });
        }
        over = true;
        opener.join();
        return good;
    }));
}

// A daemon that still writes to a stream that it has closed.
TEST(StandardStreams, NeverLeadTheHostsLinesIntoWhatIsOpened) {
    const zavtest::ScratchDir directory;
    const std::string file = directory.path() / "file";
    EXPECT_TRUE(holdsWithout("012", [&file] {
        std::atomic<int> written = 0;
        std::atomic<bool> over = false;
        std::thread host([&] {
            while (!over) written += write(STDOUT_FILENO, "line of the host\n", 17) > 0 ? 1 : 0;
        });
        zavtest::inThreads(3, [&file](int) {
            for (int i = 0; i < 3000; ++i) {
                close(openAboveStandardStreams(
                    [&file] { return ::open(file.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600); }));
            }
        });
        over = true;
        host.join();
        return written == 0;
    }));
    EXPECT_EQ(zavtest::readAll(file), "");
}

TEST(StandardStreams, DoNotChangeADescriptorAboveThem) {
    const int number = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    EXPECT_EQ(moveAboveStandardStreams(number), number);
    EXPECT_EQ(close(number), 0);
    EXPECT_EQ(moveAboveStandardStreams(-1), -1);
}

TEST(StandardStreams, AreLeftByADescriptorThatWasBornThere) {
    EXPECT_TRUE(holdsWithout("0", [] {
        const int low = ::open("/dev/null", O_RDONLY);
        const int moved = moveAboveStandardStreams(low);
        return low == 0 && moved > STDERR_FILENO && isClosed(0) && fcntl(moved, F_GETFD) == FD_CLOEXEC;
    }));
}

}  // namespace
}  // namespace kest::test
