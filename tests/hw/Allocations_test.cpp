// Every allocation of every call fails: alone, or with all later ones.
#include <gtest/gtest.h>

#include <functional>

#include "hw/ZAVHwCtx.h"
#include "tests/hw/Toolkit.h"
#include "tests/support/AllocationTest.h"

namespace hwtest {
namespace {

using zavtest::liveBlocks;
using zavtest::Shortage;

constexpr int kPlenty = 70;

// Large enough that every table and every arena grows.
std::string largeOutput() {
    std::string output = "<?xml version='1.0'?><!DOCTYPE QEL><QEL>";
    for (int i = 0; i < kPlenty; ++i) {
        const std::string field = "Field" + std::to_string(i);
        output += "<Memory a='1'><" + field + ">1<!-- -->2</" + field + "><Text>" + std::string(300, 'x') +
                  "</Text></Memory><Modem/>";
    }
    return output + "</QEL>";
}

class HWAllocationsTest : public zavtest::AllocationTest {
  protected:
    HWAllocationsTest() {
        toolkit_.put("output.xml", largeOutput());
        toolkit_.put("lines", "one\n" + std::string(5000, 'x') + "\nthree\n");
        toolkit_.scannerIs("PrintLines");
        wholeLife();  // allocates what the system's libraries keep until the process ends
    }

    int init(ZAVCtx** handle) {
        return ZAV_init("tests", countMessage, &messages_, tempPath().c_str(), directory_.c_str(), handle);
    }
    int hwInit(ZAVHwCtx** context) { return ZAV_hw_init(handle_, countMessage, &messages_, context); }

    void open() {
        ASSERT_EQ(init(&handle_), 0);
        ASSERT_EQ(hwInit(&context_), 0);
        ASSERT_EQ(ZAV_hw_setopt(context_, 0, 1), 0);
    }
    void close() {
        ASSERT_EQ(ZAV_hw_free(context_), 0);
        ASSERT_EQ(ZAV_free(handle_), 0);
    }
    void wholeLife() {
        open();
        ASSERT_EQ(ZAV_hw_run(context_), 0);
        expectResults();
        close();
    }

    // The test hangs if the logger's lock is still held.
    void expectLockFree() {
        const int before = messages_;
        const wchar_t* name = nullptr;
        EXPECT_EQ(ZAV_hw_get_group_name(context_, 4, &name), 0);
        EXPECT_EQ(messages_, before + 1);
    }

    void expectResults() {
        int count = 0;
        EXPECT_EQ(ZAV_hw_get_group_instances(context_, 3, &count), 0);
        EXPECT_EQ(count, kPlenty);
        expectConsistent();
    }

    // Neither those of the aborted scan nor those of the previous one.
    void expectNoResults() {
        int count = 4711;
        EXPECT_EQ(ZAV_hw_get_group_instances(context_, 3, &count), 107);
        EXPECT_EQ(count, 4711);
        for (int group = 0; group < zav::kGroupSlots; ++group) EXPECT_EQ(context_->tables.count(group), 0U);
    }

    // Every instance and every field that is counted can be read.
    void expectConsistent() {
        for (const int group : {3, 30}) {
            int instances = 0;
            ASSERT_EQ(ZAV_hw_get_group_instances(context_, group, &instances), 0);
            for (int instance = 0; instance < instances; ++instance) {
                const wchar_t** names = nullptr;
                int count = -1;
                ASSERT_EQ(ZAV_hw_get_fields(context_, group, instance, &names, &count), 0) << instance;
                ASSERT_EQ(count, group == 3 ? 2 : 0);
                const wchar_t* value = nullptr;
                if (count == 0) continue;
                ASSERT_EQ(ZAV_hw_get_value(context_, group, instance, names[0], &value), 0);
                ASSERT_STREQ(value, L"12");
            }
        }
    }

    const Toolkit toolkit_;
    const std::wstring directory_ = toolkit_.path().wstring();
    ZAVCtx* handle_ = nullptr;
    ZAVHwCtx* context_ = nullptr;
};

TEST_P(HWAllocationsTest, OpenHandle) {
    everyAllocation([this](int nth) {
        ZAVCtx* const untouched = reinterpret_cast<ZAVCtx*>(this);
        ZAVCtx* handle = untouched;
        const Attempt attempt = failAt(
            nth, [&] { return init(&handle); }, ZAV_SUCCESS, ZAV_ERROR_LOGGER);
        if (attempt.code == 0) {
            EXPECT_EQ(ZAV_free(handle), 0);
        } else {
            EXPECT_EQ(handle, untouched);
        }
        return attempt.reached;
    });
}

TEST_P(HWAllocationsTest, MakeContext) {
    everyAllocation([this](int nth) {
        EXPECT_EQ(init(&handle_), 0);
        const bool reached = makesContextOrNone<ZAVHwCtx>(
            nth, [this](ZAVHwCtx** context) { return hwInit(context); }, ZAV_hw_free);
        EXPECT_EQ(ZAV_free(handle_), 0);
        return reached;
    });
}

TEST_P(HWAllocationsTest, SetOption) {
    everyAllocation([this](int nth) {
        open();
        const Attempt attempt = failAt(nth, [this] { return ZAV_hw_setopt(context_, 4, 0); });
        EXPECT_EQ(context_->groupEnabled.at(4), attempt.code == 0 ? 0 : 1) << nth;
        close();
        return attempt.reached;
    });
}

TEST_P(HWAllocationsTest, Scan) {
    everyAllocation([this](int nth) {
        open();
        const Attempt attempt = failAt(nth, [this] { return ZAV_hw_run(context_); });
        expectLockFree();
        int returnCode = 0;
        EXPECT_EQ(ZAV_hw_get_returncode(context_, &returnCode), 0);
        EXPECT_EQ(returnCode, attempt.code == 0 ? 0 : -1) << nth;
        if (attempt.code == 0) {
            expectResults();
        } else {
            expectNoResults();
        }
        close();
        return attempt.reached;
    });
}

TEST_P(HWAllocationsTest, NextScanSucceeds) {
    toolkit_.put("output.xml", "<QEL><Memory><Size>1<!-- -->2</Size><Type/></Memory><Modem/></QEL>");
    int nth = 1;
    for (bool reached = true; reached; ++nth) {
        const long blocks = liveBlocks();
        open();
        ASSERT_EQ(ZAV_hw_run(context_), 0);
        const Attempt attempt = failAt(nth, [this] { return ZAV_hw_run(context_); });
        reached = attempt.reached;
        if (attempt.code != 0) expectNoResults();
        ASSERT_EQ(ZAV_hw_run(context_), 0) << nth << ": " << attempt.code;
        int count = 0;
        EXPECT_EQ(ZAV_hw_get_group_instances(context_, 3, &count), 0);
        EXPECT_EQ(count, 1);
        expectConsistent();
        close();
        EXPECT_EQ(liveBlocks(), blocks) << nth << ": " << attempt.code;
    }
    EXPECT_GT(nth, 100);
}

// The system's iconv converts this encoding.
TEST_P(HWAllocationsTest, ScanWithIconvEncoding) {
    toolkit_.put("output.xml", "<?xml version='1.0' encoding='ISO-8859-2'?><QEL><Memory/></QEL>");
    open();
    ASSERT_EQ(ZAV_hw_run(context_), 0);
    int nth = 1;
    for (bool reached = true; reached; ++nth) {
        const Attempt attempt = failAt(nth, [this] { return ZAV_hw_run(context_); });
        reached = attempt.reached;
    }
    EXPECT_GT(nth, 100);
    close();
}

TEST_P(HWAllocationsTest, Queries) {
    open();
    ASSERT_EQ(ZAV_hw_run(context_), 0);
    const wchar_t* text = nullptr;
    const wchar_t** names = nullptr;
    int number = 0;
    const std::vector<std::function<int()>> queries = {
        [&] { return ZAV_hw_get_returncode(context_, &number); },
        [&] { return ZAV_hw_get_group_name(context_, 4, &text); },
        [&] { return ZAV_hw_get_group_instances(context_, 3, &number); },
        [&] { return ZAV_hw_get_fields(context_, 3, 0, &names, &number); },
        [&] { return ZAV_hw_get_value(context_, 3, 0, L"Text", &text); },
        [&] { return ZAV_hw_get_value(context_, 3, 0, L"none", &text) == 106 ? 0 : -1; },
        [&] { return ZAV_hw_get_fields(context_, 3, 99'999, &names, &number) == 105 ? 0 : -1; },
    };
    const long blocks = liveBlocks();
    for (const auto& query : queries) {
        int nth = 1;
        for (bool reached = true; reached; ++nth) {
            const Attempt attempt = failAt(nth, query);
            reached = attempt.reached;
            EXPECT_EQ(liveBlocks(), blocks);
            expectLockFree();
        }
    }
    EXPECT_EQ(std::wstring(text), std::wstring(300, L'x'));
    expectResults();
    close();
}

TEST_P(HWAllocationsTest, ReleaseContext) {
    everyAllocation([this](int nth) {
        open();
        EXPECT_EQ(ZAV_hw_run(context_), 0);
        const Attempt attempt = failAt(nth, [this] { return ZAV_hw_free(context_); });
        EXPECT_EQ(ZAV_free(handle_), 0);
        return attempt.reached;
    });
}

TEST_P(HWAllocationsTest, ReleaseHandle) {
    everyAllocation([this](int nth) {
        open();
        EXPECT_EQ(ZAV_hw_free(context_), 0);
        const Attempt attempt = failAt(nth, [this] { return ZAV_free(handle_); });
        return attempt.reached;
    });
}

INSTANTIATE_TEST_SUITE_P(Fail, HWAllocationsTest, testing::Values(Shortage::Once, Shortage::ForGood),
                         zavtest::nameOf);

}  // namespace
}  // namespace hwtest
