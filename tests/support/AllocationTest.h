#pragma once

#include <gtest/gtest.h>

#include "include/zav.h"
#include "tests/support/Heap.h"
#include "tests/support/NothingLeft.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {

inline std::string nameOf(const testing::TestParamInfo<Shortage>& shortage) {
    return shortage.param == Shortage::Once ? "Once" : "FromThereOn";
}

// A test in which the allocations of a call fail one after another, each either alone or with all that follow it.
// Use zav_test_heap() of Support.cmake.
class AllocationTest : public testing::TestWithParam<Shortage> {
  protected:
    // The outcome of a call in which an allocation was to fail.
    struct Attempt {
        int code;
        bool reached;  // whether the call made that many allocations
    };

    // Counts messages. It allocates nothing, as that would change which allocation fails.
    static void countMessage(int, int, void* userData, const char*, const char*) {
        ++*static_cast<int*>(userData);
    }

    // Makes a call whose nth allocation fails. It must return `success`; when the allocation was reached, also
    // ZAV_ERROR_MEMORY or `otherError`.
    template <class Call>
    static Attempt failAt(int nth, Call call, int success = ZAV_SUCCESS, int otherError = ZAV_ERROR_MEMORY) {
        Attempt attempt = {};
        {
            const FailingHeap heap(nth, GetParam());
            attempt = {call(), heap.happened()};
        }
        const bool failed = attempt.code == ZAV_ERROR_MEMORY || attempt.code == otherError;
        EXPECT_TRUE(attempt.code == success || (attempt.reached && failed)) << nth << ": " << attempt.code;
        return attempt;
    }

    // Repeats `test` until the call in it needs no further allocation. It gets the number of the allocation that
    // fails and returns whether that was reached. Nothing may be left behind after each repetition. Returns the
    // number of repetitions.
    template <class Test>
    int everyAllocation(Test test) {
        int nth = 0;
        for (bool reached = true; reached && !HasFatalFailure();) {
            const NothingLeft nothingLeft;
            const long blocks = liveBlocks();
            reached = test(++nth);
            EXPECT_EQ(liveBlocks(), blocks) << nth;
            EXPECT_TRUE(std::filesystem::is_empty(temp_.path())) << nth;
        }
        EXPECT_GE(nth, 2);
        return nth;
    }

    // Makes a context with `init` while an allocation fails, and releases it with `release`. Returns whether that many
    // allocations were made.
    template <class Context, class Init, class Release>
    bool makesContextOrNone(int nth, Init init, Release release) {
        Context* context = reinterpret_cast<Context*>(this);
        const Attempt attempt = failAt(nth, [&] { return init(&context); });
        if (attempt.code == 0) {
            EXPECT_EQ(release(context), 0);
        } else {
            EXPECT_EQ(context, nullptr);
        }
        return attempt.reached;
    }

    // The library's temporary directory.
    const std::wstring& tempPath() const { return tempPath_; }

    int messages_ = 0;

  private:
    const ScratchDir temp_;
    const std::wstring tempPath_ = temp_.path().wstring();
};

}  // namespace zavtest
