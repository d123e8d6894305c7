#include <gtest/gtest.h>

#include <atomic>
#include <latch>
#include <thread>
#include <vector>

#include "core/ZAVlog.h"

namespace zav::test {
namespace {

// A host that counts messages without a lock and detects two threads in its callback.
struct Host {
    static void callback(int, int component, void* userData, const char*, const char*) {
        auto& host = *static_cast<Host*>(userData);
        if (host.inside.exchange(true)) ++host.overlaps;
        ++(component == 3 ? host.hardware : host.software);
        std::this_thread::yield();
        host.inside = false;
    }

    std::atomic<bool> inside = false;
    std::atomic<int> overlaps = 0;
    int hardware = 0;
    int software = 0;
};

// These are the first messages of the process, so the threads also race for the first use of the lock.
TEST(ZAVlogThreads, TwoLoggersNeverCallTheHostAtOnce) {
    constexpr int kMessages = 2000;
    Host host;
    std::latch start(4);
    const auto trace = [&](int component) {
        ZAVlog log(component, Host::callback, &host);
        start.arrive_and_wait();
        for (int i = 0; i < kMessages; ++i) log.traceMAX("f", "message %d", i);
    };
    std::vector<std::thread> threads;
    for (const int component : {3, 4, 3, 4}) threads.emplace_back(trace, component);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(host.overlaps, 0);
    EXPECT_EQ(host.hardware, 2 * kMessages);
    EXPECT_EQ(host.software, 2 * kMessages);
}

TEST(ZAVlogThreads, CallbackThatThrowsInOneThreadDoesNotStopTheOther) {
    constexpr int kMessages = 500;
    Host host;
    std::latch start(2);
    std::thread thrower([&start] {
        ZAVlog log(
            3, [](int, int, void*, const char*, const char*) { throw 7; }, nullptr);
        start.arrive_and_wait();
        for (int i = 0; i < kMessages; ++i) EXPECT_THROW(log.traceMIN("f", "message"), int);
    });
    ZAVlog log(4, Host::callback, &host);
    start.arrive_and_wait();
    for (int i = 0; i < kMessages; ++i) log.traceMAX("f", "message %d", i);
    thrower.join();
    EXPECT_EQ(host.software, kMessages);
}

}  // namespace
}  // namespace zav::test
