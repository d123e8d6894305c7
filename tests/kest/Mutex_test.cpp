#include "kest/Mutex.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

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
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([&] {
            for (int j = 0; j < 10'000; ++j) {
                mutex.lock();
                ++count;
                mutex.unlock();
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(count, 40'000);
}

}  // namespace
}  // namespace kest
