// Threads that scan at the same time, each with its own handle.
#include "tests/hw/Inventory.h"
#include "tests/support/SerialCallback.h"
#include "tests/support/Threads.h"

namespace hwtest {
namespace {

constexpr int kThreads = 8;

TEST(Concurrent, EveryThreadGetsTheInventoryOfItsOwnScanner) {
    const zavtest::NothingLeft nothingLeft;
    zavtest::inThreads(kThreads, [](int number) {
        Inventory inventory;
        for (int round = 0; round < 5; ++round) {
            const std::string size = std::to_string(100 * number + round);
            inventory.scannerWrites("<QEL><Memory><Size>" + size + "</Size></Memory></QEL>");
            ASSERT_EQ(inventory.run(), 0);
            EXPECT_EQ(inventory.value(3, 0, L"Size"), std::wstring(size.begin(), size.end()));
        }
    });
}

TEST(Concurrent, EveryThreadLearnsTheStatusOfItsOwnScanner) {
    const zavtest::NothingLeft nothingLeft;
    zavtest::inThreads(kThreads, [](int number) {
        Inventory inventory;
        inventory.scannerIs("FailAfterOutput");
        for (int round = 0; round < 5; ++round) {
            const int status = 1 + 10 * number + round;
            inventory.put("status", std::to_string(status));
            ASSERT_EQ(inventory.run(), 103);
            EXPECT_EQ(inventory.returnCode(), status);
        }
    });
}

TEST(Concurrent, HandlesAndContextsComeAndGoInEveryThread) {
    const zavtest::NothingLeft nothingLeft;
    zavtest::inThreads(kThreads, [](int) {
        for (int round = 0; round < 5; ++round) {
            const Inventory inventory;
            EXPECT_EQ(inventory.run(), 103);
        }
    });
}

TEST(Concurrent, TheCallbackIsNeverEnteredByTwoThreadsAtOnce) {
    const Toolkit toolkit;
    toolkit.scannerWrites("<QEL><Memory/></QEL>");
    const auto use = [](ZAVCtx* handle, zavtest::CountingHost& host) {
        ZAVHwCtx* context = nullptr;
        ASSERT_EQ(ZAV_hw_init(handle, zavtest::CountingHost::callback, &host, &context), 0);
        for (int i = 0; i < 200; ++i) ASSERT_EQ(ZAV_hw_setopt(context, 0, 1), 0);
        EXPECT_EQ(ZAV_hw_run(context), 0);
        EXPECT_EQ(ZAV_hw_free(context), 0);
    };
    EXPECT_GE(zavtest::messagesOfThreads(kThreads, toolkit.path(), use), kThreads * 220L);
}

}  // namespace
}  // namespace hwtest
