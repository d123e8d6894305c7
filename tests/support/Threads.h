#pragma once

#include <thread>
#include <vector>

namespace zavtest {

// Calls work(0), work(1) and so on, each in a thread of its own, and waits for all of them.
template <class Work>
void inThreads(int count, Work work) {
    std::vector<std::thread> threads;
    threads.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) threads.emplace_back([&work, i] { work(i); });
    for (std::thread& thread : threads) thread.join();
}

}  // namespace zavtest
