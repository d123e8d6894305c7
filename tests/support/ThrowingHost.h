#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>

#include "tests/support/NothingLeft.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {

// A host whose callback throws at one message, counted from 1, and counts the others.
struct ThrowingHost {
    static void callback(int, int, void* userData, const char*, const char*) {
        auto& self = *static_cast<ThrowingHost*>(userData);
        if (++self.received == self.throwsAt) throw std::runtime_error("thrown by the host");
    }

    int received = 0;
    int throwsAt = 0;
};

// A test with such a host that leaves nothing behind: no file, no descriptor, no child.
class ThrowingHostTest : public testing::Test, private NothingLeft {
  protected:
    ~ThrowingHostTest() override { EXPECT_TRUE(std::filesystem::is_empty(temp_.path())); }

    // Makes the call once for each of its messages, at which the callback throws: the code is 5. `before` and `after`
    // surround each call. Returns the number of messages.
    int everyMessage(const std::function<void()>& before, const std::function<int()>& call,
                     const std::function<void()>& after) {
        for (int nth = 1;; ++nth) {
            before();
            host_ = {0, nth};
            const int code = call();
            const bool thrown = host_.received >= nth;
            host_.throwsAt = 0;
            EXPECT_EQ(code, thrown ? 5 : 0) << nth;
            after();
            if (!thrown || HasFailure()) return nth - 1;
        }
    }

    // `query` logs one message. The test hangs when the logger's lock is still held.
    void expectLockFree(const std::function<int()>& query) {
        const int before = host_.received;
        EXPECT_EQ(query(), 0);
        EXPECT_EQ(host_.received, before + 1);
    }

    // The library's temporary directory.
    std::wstring tempPath() const { return temp_.path().wstring(); }

    ThrowingHost host_;

  private:
    const ScratchDir temp_;
};

}  // namespace zavtest
