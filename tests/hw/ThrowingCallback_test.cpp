// A host whose callback throws, at each message in its turn.
#include <functional>
#include <stdexcept>

#include "tests/hw/Inventory.h"

namespace hwtest {
namespace {

// Throws at one message, counted from 1, and hears the others.
struct ThrowingHost {
    static void callback(int, int, void* userData, const char*, const char*) {
        auto& self = *static_cast<ThrowingHost*>(userData);
        if (++self.heard == self.throwsAt) throw std::runtime_error("the host's own");
    }

    int heard = 0;
    int throwsAt = 0;
};

class ThrowingCallbackTest : public testing::Test, private zavtest::NothingLeft {
  protected:
    ThrowingCallbackTest() {
        toolkit_.put("output.xml", "<!DOCTYPE QEL><QEL><Memory><Size>1</Size></Memory></QEL>");
        toolkit_.put("lines", "one\ntwo\n");
        toolkit_.scannerIs("PrintLines");
    }
    ~ThrowingCallbackTest() override { EXPECT_TRUE(std::filesystem::is_empty(temp_.path())); }

    int init(ZAVCtx** handle) {
        return ZAV_init("tests", ThrowingHost::callback, &host_, temp_.path().wstring().c_str(),
                        toolkit_.path().wstring().c_str(), handle);
    }
    int hwInit(ZAVHwCtx** context) { return ZAV_hw_init(handle_, ThrowingHost::callback, &host_, context); }
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

    // Makes the call once for each of its messages, which throws: the code is 5, and the lock is free again.
    // Each time `before` comes first and `behind` last. Returns how many messages there were.
    int everyMessage(const std::function<void()>& before, const std::function<int()>& call,
                     const std::function<void()>& behind) {
        for (int nth = 1;; ++nth) {
            before();
            host_ = {0, nth};
            const int code = call();
            const bool thrown = host_.heard >= nth;
            host_.throwsAt = 0;
            EXPECT_EQ(code, thrown ? 5 : 0) << nth;
            behind();
            if (!thrown || HasFailure()) return nth - 1;
        }
    }

    // Else this would wait for ever.
    void expectLockFree() {
        const int before = host_.heard;
        const wchar_t* name = nullptr;
        EXPECT_EQ(ZAV_hw_get_group_name(context_, 4, &name), 0);
        EXPECT_EQ(host_.heard, before + 1);
    }

    const Toolkit toolkit_;
    const zavtest::ScratchDir temp_;
    ThrowingHost host_;
    ZAVCtx* handle_ = nullptr;
    ZAVHwCtx* context_ = nullptr;
};

TEST_F(ThrowingCallbackTest, OpensNoHandle) {
    ZAVCtx* const untouched = reinterpret_cast<ZAVCtx*>(this);
    const int messages = everyMessage([&] { handle_ = untouched; }, [this] { return init(&handle_); },
                                      [&] {
                                          if (handle_ == untouched) return;
                                          EXPECT_EQ(ZAV_free(handle_), 0);
                                      });
    EXPECT_GE(messages, 8);
}

TEST_F(ThrowingCallbackTest, MakesNoContext) {
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

TEST_F(ThrowingCallbackTest, ChangesNoOption) {
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

TEST_F(ThrowingCallbackTest, EndsAScanButNotTheContext) {
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

TEST_F(ThrowingCallbackTest, LeavesNoResultsOfAScanAndOfTheOneBefore) {
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

TEST_F(ThrowingCallbackTest, EndsAFailedScanAlike) {
    toolkit_.put("status", "3");
    for (const char* const program : {"FailAfterOutput", "WriteNothing"}) {
        toolkit_.scannerIs(program);
        open();
        host_ = {};
        ASSERT_NE(ZAV_hw_run(context_), 0);
        const int messages = host_.heard;
        for (int nth = 1; nth <= messages; ++nth) {
            host_ = {0, nth};
            EXPECT_EQ(ZAV_hw_run(context_), 5) << program << " " << nth;
            expectLockFree();
        }
        close();
    }
}

TEST_F(ThrowingCallbackTest, AnswersNoQuery) {
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
            wanted = host_.heard;
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

TEST_F(ThrowingCallbackTest, ReleasesAContextAllTheSame) {
    const int messages = everyMessage([this] { open(); }, [this] { return ZAV_hw_free(context_); },
                                      [this] { EXPECT_EQ(ZAV_free(handle_), 0); });
    EXPECT_EQ(messages, 3);
}

TEST_F(ThrowingCallbackTest, ReleasesAHandleAllTheSame) {
    const int messages =
        everyMessage([this] { EXPECT_EQ(init(&handle_), 0); }, [this] { return ZAV_free(handle_); }, [] {});
    EXPECT_EQ(messages, 3);
}

}  // namespace
}  // namespace hwtest
