#include "kest/Mutex.h"

#include <gtest/gtest.h>

#include "tests/support/Threads.h"

namespace kest {
namespace {

TEST(Mutex, BothOperationsReturnZero) {
    Mutex mutex;
    EXPECT_EQ(mutex.lock(), 0);
    EXPECT_EQ(mutex.unlock(), 0);
    EXPECT_EQ(mutex.lock(), 0);
    EXPECT_EQ(mutex.unlock(), 0);
}

TEST(Mutex, LetsOneThreadInAtATime) {
    Mutex mutex;
    int count = 0;
    zavtest::inThreads(4, [&](int) {
        for (int i = 0; i < 10'000; ++i) {
            mutex.lock();
            ++count;
            mutex.unlock();
        }
    });
    EXPECT_EQ(count, 40'000);
}

}  // namespace
}  // namespace kest
