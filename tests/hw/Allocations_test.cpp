// Memory that runs out at any point of any call: once, or from there on.
#include <gtest/gtest.h>

#include <functional>

#include "hw/ZAVHwCtx.h"
#include "tests/hw/Toolkit.h"
#include "tests/support/Heap.h"
#include "tests/support/NothingLeft.h"

namespace hwtest {
namespace {

using zavtest::FailingHeap;
using zavtest::liveBlocks;
using zavtest::Shortage;

constexpr int kPlenty = 70;

// Large enough for every table and every block of memory to grow.
std::string largeOutput() {
    std::string output = "<?xml version='1.0'?><!DOCTYPE QEL><QEL>";
    for (int i = 0; i < kPlenty; ++i) {
        const std::string field = "Field" + std::to_string(i);
        output += "<Memory a='1'><" + field + ">1<!-- -->2</" + field + "><Text>" + std::string(300, 'x') +
                  "</Text></Memory><Modem/>";
    }
    return output + "</QEL>";
}

class AllocationsTest : public testing::TestWithParam<Shortage> {
  protected:
    AllocationsTest() {
        toolkit_.put("output.xml", largeOutput());
        toolkit_.put("lines", "one\n" + std::string(5000, 'x') + "\nthree\n");
        toolkit_.scannerIs("PrintLines");
        wholeLife();  // what the system's libraries keep for good they have from now on
    }

    // Counts, as anything else might allocate.
    static void callback(int, int, void* userData, const char*, const char*) {
        ++*static_cast<int*>(userData);
    }

    int init(ZAVCtx** handle) {
        return ZAV_init("tests", callback, &messages_, temp_.c_str(), directory_.c_str(), handle);
    }
    int hwInit(ZAVHwCtx** context) { return ZAV_hw_init(handle_, callback, &messages_, context); }

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

    // One call with its nth allocation failing. False when it came to no such allocation.
    template <class Call>
    static bool failsAt(int nth, int& code, Call call) {
        const FailingHeap heap(nth, GetParam());
        code = call();
        return heap.happened();
    }

    // Repeats a whole test until its call needs no further allocation. `once` gets the number of the
    // allocation that fails, and returns whether it came to it.
    template <class Once>
    void everyAllocation(Once once) {
        int nth = 1;
        for (bool happened = true; happened; ++nth) {
            const zavtest::NothingLeft nothingLeft;
            const long blocks = liveBlocks();
            happened = once(nth);
            EXPECT_EQ(liveBlocks(), blocks) << nth;
            EXPECT_TRUE(std::filesystem::is_empty(tempDirectory_.path())) << nth;
            if (HasFatalFailure()) return;
        }
        EXPECT_GT(nth, 2);
    }

    // Nobody holds the logger's lock, else this would wait for ever.
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

    // Of the scan that was broken off as of the one before.
    void expectNoResults() {
        int count = 4711;
        EXPECT_EQ(ZAV_hw_get_group_instances(context_, 3, &count), 107);
        EXPECT_EQ(count, 4711);
        for (const auto& [group, instances] : context_->groups) EXPECT_TRUE(instances.empty()) << group;
        for (const auto& [group, arrays] : context_->fieldNames) EXPECT_TRUE(arrays.empty()) << group;
    }

    // All that is counted can be had.
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
    const zavtest::ScratchDir tempDirectory_;
    const std::wstring temp_ = tempDirectory_.path().wstring();
    const std::wstring directory_ = toolkit_.path().wstring();
    ZAVCtx* handle_ = nullptr;
    ZAVHwCtx* context_ = nullptr;
    int messages_ = 0;
};

TEST_P(AllocationsTest, OfOpeningAHandle) {
    everyAllocation([this](int nth) {
        ZAVCtx* const untouched = reinterpret_cast<ZAVCtx*>(this);
        ZAVCtx* handle = untouched;
        int code = 0;
        const bool happened = failsAt(nth, code, [&] { return init(&handle); });
        EXPECT_TRUE(code == 0 || (happened && (code == 5 || code == 4))) << nth << ": " << code;
        if (code == 0) {
            EXPECT_EQ(ZAV_free(handle), 0);
        } else {
            EXPECT_EQ(handle, untouched);
        }
        return happened;
    });
}

TEST_P(AllocationsTest, OfMakingAContext) {
    everyAllocation([this](int nth) {
        EXPECT_EQ(init(&handle_), 0);
        ZAVHwCtx* context = reinterpret_cast<ZAVHwCtx*>(this);
        int code = 0;
        const bool happened = failsAt(nth, code, [&] { return hwInit(&context); });
        EXPECT_TRUE(code == 0 || (happened && code == 5)) << nth << ": " << code;
        if (code == 0) {
            EXPECT_EQ(ZAV_hw_free(context), 0);
        } else {
            EXPECT_EQ(context, nullptr);
        }
        EXPECT_EQ(ZAV_free(handle_), 0);
        return happened;
    });
}

TEST_P(AllocationsTest, OfSettingAnOption) {
    everyAllocation([this](int nth) {
        open();
        int code = 0;
        const bool happened = failsAt(nth, code, [this] { return ZAV_hw_setopt(context_, 4, 0); });
        EXPECT_TRUE(code == 0 || (happened && code == 5)) << nth << ": " << code;
        EXPECT_EQ(context_->groupEnabled.at(4), code == 0 ? 0 : 1) << nth;
        close();
        return happened;
    });
}

TEST_P(AllocationsTest, OfAScan) {
    everyAllocation([this](int nth) {
        open();
        int code = 0;
        const bool happened = failsAt(nth, code, [this] { return ZAV_hw_run(context_); });
        EXPECT_TRUE(code == 0 || (happened && code == 5)) << nth << ": " << code;
        expectLockFree();
        int returnCode = 0;
        EXPECT_EQ(ZAV_hw_get_returncode(context_, &returnCode), 0);
        EXPECT_EQ(returnCode, code == 0 ? 0 : -1) << nth;
        if (code == 0) {
            expectResults();
        } else {
            expectNoResults();
        }
        close();
        return happened;
    });
}

TEST_P(AllocationsTest, OfAScanLeaveAContextInWhichTheNextScanSucceeds) {
    toolkit_.put("output.xml", "<QEL><Memory><Size>1<!-- -->2</Size><Type/></Memory><Modem/></QEL>");
    int nth = 1;
    for (bool happened = true; happened; ++nth) {
        const long blocks = liveBlocks();
        open();
        ASSERT_EQ(ZAV_hw_run(context_), 0);
        int code = 0;
        happened = failsAt(nth, code, [this] { return ZAV_hw_run(context_); });
        if (code != 0) expectNoResults();
        ASSERT_EQ(ZAV_hw_run(context_), 0) << nth << ": " << code;
        int count = 0;
        EXPECT_EQ(ZAV_hw_get_group_instances(context_, 3, &count), 0);
        EXPECT_EQ(count, 1);
        expectConsistent();
        close();
        EXPECT_EQ(liveBlocks(), blocks) << nth << ": " << code;
    }
    EXPECT_GT(nth, 100);
}

// The encoding is one that the system's iconv reads.
TEST_P(AllocationsTest, OfAScanWithAnotherEncoding) {
    toolkit_.put("output.xml", "<?xml version='1.0' encoding='ISO-8859-2'?><QEL><Memory/></QEL>");
    open();
    ASSERT_EQ(ZAV_hw_run(context_), 0);
    int nth = 1;
    for (bool happened = true; happened; ++nth) {
        int code = 0;
        happened = failsAt(nth, code, [this] { return ZAV_hw_run(context_); });
        EXPECT_TRUE(code == 0 || (happened && code == 5)) << nth << ": " << code;
    }
    EXPECT_GT(nth, 100);
    close();
}

TEST_P(AllocationsTest, OfQueries) {
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
        for (bool happened = true; happened; ++nth) {
            int code = 0;
            happened = failsAt(nth, code, query);
            EXPECT_TRUE(code == 0 || (happened && code == 5)) << nth << ": " << code;
            EXPECT_EQ(liveBlocks(), blocks);
            expectLockFree();
        }
    }
    EXPECT_EQ(std::wstring(text), std::wstring(300, L'x'));
    expectResults();
    close();
}

TEST_P(AllocationsTest, OfReleasingAContext) {
    everyAllocation([this](int nth) {
        open();
        EXPECT_EQ(ZAV_hw_run(context_), 0);
        int code = 0;
        const bool happened = failsAt(nth, code, [this] { return ZAV_hw_free(context_); });
        EXPECT_TRUE(code == 0 || (happened && code == 5)) << nth << ": " << code;
        EXPECT_EQ(ZAV_free(handle_), 0);
        return happened;
    });
}

TEST_P(AllocationsTest, OfReleasingAHandle) {
    everyAllocation([this](int nth) {
        open();
        EXPECT_EQ(ZAV_hw_free(context_), 0);
        int code = 0;
        const bool happened = failsAt(nth, code, [this] { return ZAV_free(handle_); });
        EXPECT_TRUE(code == 0 || (happened && code == 5)) << nth << ": " << code;
        return happened;
    });
}

INSTANTIATE_TEST_SUITE_P(Fail, AllocationsTest, testing::Values(Shortage::Once, Shortage::ForGood),
                         [](const auto& shortage) {
                             return shortage.param == Shortage::Once ? "Once" : "FromThereOn";
                         });

}  // namespace
}  // namespace hwtest
