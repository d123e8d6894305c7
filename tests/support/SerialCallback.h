#pragma once

#include <gtest/gtest.h>

#include <filesystem>

#include "include/zav.h"
#include "tests/support/ScratchDir.h"
#include "tests/support/Threads.h"

namespace zavtest {

// A host whose callback counts without a lock. That is correct only if the library never calls it from two threads at once.
struct CountingHost {
    static void callback(int, int, void* userData, const char*, const char*) {
        ++static_cast<CountingHost*>(userData)->messages;
    }
    long messages = 0;
};

// Calls `use` in that many threads, each time with a handle of its own and the one host. Returns the number of messages.
template <class Use>
long messagesOfThreads(int threads, const std::filesystem::path& toolkit, Use use) {
    CountingHost host;
    const ScratchDir temp;
    inThreads(threads, [&](int) {
        ZAVCtx* handle = nullptr;
        ASSERT_EQ(ZAV_init("tests", CountingHost::callback, &host, temp.path().wstring().c_str(),
                           toolkit.wstring().c_str(), &handle),
                  0);
        use(handle, host);
        EXPECT_EQ(ZAV_free(handle), 0);
    });
    EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
    return host.messages;
}

}  // namespace zavtest
