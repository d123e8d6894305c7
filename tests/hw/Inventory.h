#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "include/zav.h"
#include "tests/hw/Toolkit.h"
#include "tests/support/LogRecorder.h"
#include "tests/support/NothingLeft.h"

namespace hwtest {

using Messages = std::vector<zavtest::Message>;

// A host with a library handle, a hardware context with every group enabled, and a scanner of its own. It
// checks at its end that no file is left.
//     scannerWrites("<QEL><Processor><Cores>8</Cores></Processor></QEL>");
//     ASSERT_EQ(run(), 0);
//     EXPECT_EQ(value(2, 0, L"Cores"), L"8");
class Inventory : public Toolkit {
  public:
    explicit Inventory(const std::string& toolkitName = "toolkit");
    ~Inventory();
    Inventory(const Inventory&) = delete;
    Inventory& operator=(const Inventory&) = delete;

    ZAVCtx* handle() const { return handle_; }
    ZAVHwCtx* context() const { return context_; }
    const std::filesystem::path& temp() const { return temp_.path(); }

    int enable(int group) const { return ZAV_hw_setopt(context_, group, 1); }
    int disable(int group) const { return ZAV_hw_setopt(context_, group, 0); }
    int run() const { return ZAV_hw_run(context_); }

    // Each is a failed check, and has an empty result, when the library refuses.
    int returnCode() const;
    int instances(int group) const;
    std::vector<std::wstring> fields(int group, int instance) const;
    std::wstring value(int group, int instance, const wchar_t* field) const;

    // What the context told the host since it was made, or since the last call.
    Messages takeMessages();
    // The texts of one function's messages among them.
    std::vector<std::string> takeTextsOf(const std::string& function);

    // Both are released; no other call may follow.
    void close();

  private:
    zavtest::ScratchDir temp_;
    zavtest::LogRecorder log_;
    ZAVCtx* handle_ = nullptr;
    ZAVHwCtx* context_ = nullptr;
};

// A test on an inventory that leaves nothing behind: no file, no descriptor, no child.
class InventoryTest : public testing::Test, private zavtest::NothingLeft, protected Inventory {};

}  // namespace hwtest
