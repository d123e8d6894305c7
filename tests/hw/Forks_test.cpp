// Hosts that fork while one of their threads scans.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/hw/Inventory.h"
#include "tests/support/Child.h"

namespace hwtest {
namespace {

// The threads have contexts of their own and share the toolkit.
class Fork : public InventoryTest {
  protected:
    Fork() { scannerWrites("<QEL><Memory><Size>1</Size></Memory></QEL>"); }

    // Runs everything from opening the library to releasing it.
    bool canScan() const {
        zavtest::LogRecorder log;
        ZAVCtx* handle = nullptr;
        ZAVHwCtx* context = nullptr;
        int count = 0;
        const auto callback = zavtest::LogRecorder::callback;
        return ZAV_init("tests", callback, &log, temp().wstring().c_str(), path().wstring().c_str(),
                        &handle) == 0 &&
               ZAV_hw_init(handle, callback, &log, &context) == 0 && ZAV_hw_setopt(context, 0, 1) == 0 &&
               ZAV_hw_run(context) == 0 && ZAV_hw_get_group_instances(context, 3, &count) == 0 &&
               count == 1 && ZAV_hw_free(context) == 0 && ZAV_free(handle) == 0;
    }
};

TEST_F(Fork, WhileAThreadScansLeavesTheChildAbleToScan) {
    std::atomic<bool> over = false;
    std::thread scanner([&] {
        while (!over) EXPECT_TRUE(canScan());
    });
    for (int round = 0; round < 100 && !HasFailure(); ++round) {
        EXPECT_TRUE(zavtest::holdsInChild([this] { return canScan(); }));
    }
    over = true;
    scanner.join();
}

}  // namespace
}  // namespace hwtest
