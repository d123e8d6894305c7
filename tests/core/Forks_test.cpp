// Hosts that fork while one of their threads is in the library.
#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>

#include "core/ZAVlog.h"
#include "tests/support/Child.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/NothingLeft.h"

namespace zav::test {
namespace {

bool canLog() {
    zavtest::LogRecorder host;
    ZAVlog log(1, zavtest::LogRecorder::callback, &host);
    log.traceMAX("f", "message of the child");
    return host.messages.size() == 1;
}

TEST(Fork, WhileAThreadLogsLeavesTheChildAbleToLog) {
    const zavtest::NothingLeft nothingLeft;
    std::atomic<bool> over = false;
    std::thread logger([&over] {
        zavtest::LogRecorder host;
        ZAVlog log(1, zavtest::LogRecorder::callback, &host);
        while (!over) log.traceMAX("f", "message");
    });
    for (int round = 0; round < 200 && !testing::Test::HasFailure(); ++round) {
        EXPECT_TRUE(zavtest::holdsInChild(canLog));
    }
    over = true;
    logger.join();
}

// The callback waits for the thread that forks.
TEST(Fork, DoesNotWaitForACallback) {
    struct Host {
        static void callback(int, int, void* userData, const char*, const char*) {
            auto& host = *static_cast<Host*>(userData);
            host.entered.count_down();
            host.forked.wait();
        }
        std::latch entered{1};
        std::latch forked{1};
    } host;
    std::thread logger([&host] { ZAVlog(1, Host::callback, &host).traceMAX("f", "message"); });
    host.entered.wait();
    EXPECT_TRUE(zavtest::holdsInChild(canLog));
    host.forked.count_down();
    logger.join();
    EXPECT_TRUE(canLog());
}

TEST(Fork, InACallbackLeavesBothProcessesAbleToLog) {
    struct Host {
        static void callback(int, int, void* userData, const char*, const char*) {
            *static_cast<pid_t*>(userData) = fork();
        }
    };
    pid_t child = -1;
    ZAVlog(1, Host::callback, &child).traceMAX("f", "message");
    if (child == 0) {
        alarm(60);
        _exit(canLog() ? 0 : 1);
    }
    int status = -1;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_TRUE(canLog());
}

TEST(Fork, InACallbackKeepsTheLockInTheChild) {
    struct Host {
        static void callback(int, int, void* userData, const char*, const char*) {
            *static_cast<bool*>(userData) = zavtest::holdsInChild([] {
                std::atomic<bool> logged = false;
                std::thread([&logged] {
                    canLog();
                    logged = true;
                }).detach();
                usleep(100'000);
                return !logged;
            });
        }
    };
    bool held = false;
    ZAVlog(1, Host::callback, &held).traceMAX("f", "message");
    EXPECT_TRUE(held);
}

}  // namespace
}  // namespace zav::test
