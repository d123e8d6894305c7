// A host whose callback throws at each message in turn.
#include <functional>

#include "include/zav.h"
#include "tests/hw/Toolkit.h"
#include "tests/support/ThrowingHost.h"

namespace hwtest {
namespace {

class HWThrowingCallbackTest : public zavtest::ThrowingHostTest {
  protected:
    HWThrowingCallbackTest() {
        toolkit_.put("output.xml", "<!DOCTYPE QEL><QEL><Memory><Size>1</Size></Memory></QEL>");
        toolkit_.put("lines", "one\ntwo\n");
        toolkit_.scannerIs("PrintLines");
    }

    int init(ZAVCtx** handle) {
        return ZAV_init("tests", zavtest::ThrowingHost::callback, &host_, tempPath().c_str(),
                        toolkit_.path().wstring().c_str(), handle);
    }
    int hwInit(ZAVHwCtx** context) {
        return ZAV_hw_init(handle_, zavtest::ThrowingHost::callback, &host_, context);
    }
    void open() {
        host_ = {};
        ASSERT_EQ(init(&handle_), 0);
        ASSERT_EQ(hwInit(&context_), 0);
        ASSERT_EQ(ZAV_hw_setopt(context_, 0, 1), 0);
    }
    void close() {
        host_ = {};
        EXPECT_EQ(ZAV_hw_free(context_), 0);
        EXPECT_EQ(ZAV_free(handle_), 0);
    }

    void expectLockFree() {
        ThrowingHostTest::expectLockFree([this] {
            const wchar_t* name = nullptr;
            return ZAV_hw_get_group_name(context_, 4, &name);
        });
    }

    const Toolkit toolkit_;
    ZAVCtx* handle_ = nullptr;
    ZAVHwCtx* context_ = nullptr;
};

TEST_F(HWThrowingCallbackTest, OpensNoHandle) {
    ZAVCtx* const untouched = reinterpret_cast<ZAVCtx*>(this);
    const int messages = everyMessage([&] { handle_ = untouched; }, [this] { return init(&handle_); },
                                      [&] {
                                          if (handle_ == untouched) return;
                                          EXPECT_EQ(ZAV_free(handle_), 0);
                                      });
    EXPECT_GE(messages, 8);
}

TEST_F(HWThrowingCallbackTest, MakesNoContext) {
    const int messages = everyMessage(
        [this] {
            EXPECT_EQ(init(&handle_), 0);
            context_ = reinterpret_cast<ZAVHwCtx*>(this);
        },
        [this] { return hwInit(&context_); },
        [this] {
            if (context_ != nullptr) {
                EXPECT_EQ(ZAV_hw_free(context_), 0);
            }
            EXPECT_EQ(ZAV_free(handle_), 0);
        });
    EXPECT_EQ(messages, 5);
}

TEST_F(HWThrowingCallbackTest, ChangesNoOption) {
    for (const int option : {0, 3}) {
        open();
        ASSERT_EQ(ZAV_hw_run(context_), 0);
        host_ = {0, 1};
        EXPECT_EQ(ZAV_hw_setopt(context_, option, 0), 5);
        int count = 0;
        EXPECT_EQ(ZAV_hw_get_group_instances(context_, 3, &count), 0);
        EXPECT_EQ(count, 1);
        close();
    }
}

TEST_F(HWThrowingCallbackTest, AbortsAScanButKeepsTheContext) {
    const int messages = everyMessage([this] { open(); }, [this] { return ZAV_hw_run(context_); },
                                      [this] {
                                          expectLockFree();
                                          EXPECT_EQ(ZAV_hw_run(context_), 0);
                                          const wchar_t* size = nullptr;
                                          EXPECT_EQ(ZAV_hw_get_value(context_, 3, 0, L"Size", &size), 0);
                                          EXPECT_STREQ(size, L"1");
                                          close();
                                      });
    // Two names, the configuration, the command, two lines, the exit code, the parsing, a warning, the end.
    EXPECT_EQ(messages, 10);
}

TEST_F(HWThrowingCallbackTest, LeavesNoResultsOfThisOrThePreviousScan) {
    open();
    int nth = 1;
    for (int code = 5; code == 5; ++nth) {
        host_ = {};
        ASSERT_EQ(ZAV_hw_run(context_), 0);
        host_ = {0, nth};
        code = ZAV_hw_run(context_);
        host_ = {};
        if (code == 0) continue;
        int returnCode = 0;
        int count = 0;
        const wchar_t* text = nullptr;
        const wchar_t** names = nullptr;
        EXPECT_EQ(ZAV_hw_get_returncode(context_, &returnCode), 0);
        EXPECT_EQ(returnCode, -1) << nth;
        EXPECT_EQ(ZAV_hw_get_group_instances(context_, 3, &count), 107) << nth;
        EXPECT_EQ(ZAV_hw_get_fields(context_, 3, 0, &names, &count), 107) << nth;
        EXPECT_EQ(ZAV_hw_get_value(context_, 3, 0, L"Size", &text), 107) << nth;
    }
    EXPECT_GT(nth, 10);
    close();
}

TEST_F(HWThrowingCallbackTest, AbortsAFailedScanToo) {
    toolkit_.put("status", "3");
    for (const char* const program : {"FailAfterOutput", "WriteNothing"}) {
        toolkit_.scannerIs(program);
        open();
        host_ = {};
        ASSERT_NE(ZAV_hw_run(context_), 0);
        const int messages = host_.received;
        for (int nth = 1; nth <= messages; ++nth) {
            host_ = {0, nth};
            EXPECT_EQ(ZAV_hw_run(context_), 5) << program << " " << nth;
            expectLockFree();
        }
        close();
    }
}

TEST_F(HWThrowingCallbackTest, AnswersNoQuery) {
    open();
    ASSERT_EQ(ZAV_hw_run(context_), 0);
    int number = 4711;
    const wchar_t* text = L"untouched";
    const wchar_t** names = &text;
    const std::vector<std::function<int()>> queries = {
        [&] { return ZAV_hw_get_group_name(context_, 4, &text); },
        [&] { return ZAV_hw_get_group_instances(context_, 3, &number); },
        [&] { return ZAV_hw_get_fields(context_, 3, 0, &names, &number); },
        [&] { return ZAV_hw_get_value(context_, 3, 0, L"Size", &text); },
    };
    for (const auto& query : queries) {
        host_ = {};
        int wanted = 0;
        {
            const int numberBefore = number;
            const wchar_t* const textBefore = text;
            const wchar_t** const namesBefore = names;
            ASSERT_EQ(query(), 0);
            wanted = host_.received;
            number = numberBefore;
            text = textBefore;
            names = namesBefore;
        }
        ASSERT_GT(wanted, 0);
        for (int nth = 1; nth <= wanted; ++nth) {
            host_ = {0, nth};
            EXPECT_EQ(query(), 5);
            EXPECT_EQ(number, 4711);
            EXPECT_STREQ(text, L"untouched");
            EXPECT_EQ(names, &text);
            expectLockFree();
        }
    }
    close();
}

TEST_F(HWThrowingCallbackTest, StillReleasesAContext) {
    const int messages = everyMessage([this] { open(); }, [this] { return ZAV_hw_free(context_); },
                                      [this] { EXPECT_EQ(ZAV_free(handle_), 0); });
    EXPECT_EQ(messages, 3);
}

TEST_F(HWThrowingCallbackTest, StillReleasesAHandle) {
    const int messages =
        everyMessage([this] { EXPECT_EQ(init(&handle_), 0); }, [this] { return ZAV_free(handle_); }, [] {});
    EXPECT_EQ(messages, 3);
}

}  // namespace
}  // namespace hwtest
