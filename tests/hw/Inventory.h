#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/hw/Toolkit.h"
#include "tests/support/LibraryHost.h"
#include "tests/support/NothingLeft.h"

namespace hwtest {

using zavtest::Messages;

// A host with a hardware context, in which every group is enabled, and a toolkit of its own.
//     scannerWrites("<QEL><Processor><Cores>8</Cores></Processor></QEL>");
//     ASSERT_EQ(run(), 0);
//     EXPECT_EQ(value(2, 0, L"Cores"), L"8");
class Inventory : public Toolkit, public zavtest::LibraryHost {
  public:
    explicit Inventory(const std::string& toolkitName = "toolkit");
    ~Inventory();
    Inventory(const Inventory&) = delete;
    Inventory& operator=(const Inventory&) = delete;

    ZAVHwCtx* context() const { return context_; }

    int enable(int group) const { return ZAV_hw_setopt(context_, group, 1); }
    int disable(int group) const { return ZAV_hw_setopt(context_, group, 0); }
    int run() const { return ZAV_hw_run(context_); }

    // When the library refuses, each fails the test and returns an empty result.
    int returnCode() const;
    int instances(int group) const;
    std::vector<std::wstring> fields(int group, int instance) const;
    std::wstring value(int group, int instance, const wchar_t* field) const;

    // Releases context and handle. No other call may follow.
    void close();

  private:
    ZAVHwCtx* context_ = nullptr;
};

// A test with an inventory that must leave nothing behind: no file, no descriptor, no child.
class InventoryTest : public testing::Test, private zavtest::NothingLeft, protected Inventory {};

}  // namespace hwtest
