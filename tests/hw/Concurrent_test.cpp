// Threads that scan at the same time, each with its own handle.
#include "tests/hw/Inventory.h"
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

// The callback counts without a lock, which is correct only if the library never calls it from two threads at once.
TEST(Concurrent, TheCallbackIsNeverEnteredByTwoThreadsAtOnce) {
    struct Host {
        static void callback(int, int, void* userData, const char*, const char*) {
            ++static_cast<Host*>(userData)->messages;
        }
        long messages = 0;
    } host;
    const Toolkit toolkit;
    toolkit.scannerWrites("<QEL><Memory/></QEL>");
    const zavtest::ScratchDir temp;
    zavtest::inThreads(kThreads, [&](int) {
        ZAVCtx* handle = nullptr;
        ZAVHwCtx* context = nullptr;
        ASSERT_EQ(ZAV_init("tests", Host::callback, &host, temp.path().wstring().c_str(),
                           toolkit.path().wstring().c_str(), &handle),
                  0);
        ASSERT_EQ(ZAV_hw_init(handle, Host::callback, &host, &context), 0);
        for (int i = 0; i < 200; ++i) ASSERT_EQ(ZAV_hw_setopt(context, 0, 1), 0);
        EXPECT_EQ(ZAV_hw_run(context), 0);
        EXPECT_EQ(ZAV_hw_free(context), 0);
        EXPECT_EQ(ZAV_free(handle), 0);
    });
    EXPECT_GE(host.messages, kThreads * 220L);
    EXPECT_TRUE(std::filesystem::is_empty(temp.path()));
}

}  // namespace
}  // namespace hwtest
