// A host whose callback throws at each message in turn.
#include <functional>

#include "sw/ZAVSwCtx.h"
#include "tests/support/ThrowingHost.h"
#include "tests/sw/Toolkit.h"

namespace swtest {
namespace {

class SWThrowingCallbackTest : public zavtest::ThrowingHostTest {
  protected:
    SWThrowingCallbackTest() {
        toolkit_.scannerWrites(
            "<!DOCTYPE QEL><QEL><MatchedSignature guid='1'><Variable name='a' value='b'/>"
            "</MatchedSignature></QEL>",
            "<!DOCTYPE Events><Events><Event/></Events>");
        toolkit_.put("lines", "one\ntwo\n");
    }

    int swInit(ZAVSwCtx** context) {
        return ZAV_sw_init(handle_, zavtest::ThrowingHost::callback, &host_, context);
    }
    void openHandle() {
        ASSERT_EQ(ZAV_init("tests", nullptr, nullptr, tempPath().c_str(), toolkit_.path().wstring().c_str(),
                           &handle_),
                  0);
    }
    void open() {
        host_ = {};
        openHandle();
        ASSERT_EQ(swInit(&context_), 0);
    }
    void close() {
        host_ = {};
        EXPECT_EQ(ZAV_sw_free(context_), 0);
        EXPECT_EQ(ZAV_free(handle_), 0);
    }
    int evaluate() { return ZAV_sw_evaluate(context_, L"<Signature/>"); }

    void expectLockFree() {
        ThrowingHostTest::expectLockFree([this] {
            int code = 0;
            return ZAV_sw_get_returncode(context_, &code);
        });
    }

    void expectNoResults() {
        int code = 0;
        EXPECT_EQ(ZAV_sw_get_returncode(context_, &code), 0);
        EXPECT_EQ(code, -1);
        ZAVSwResult* result = nullptr;
        EXPECT_EQ(ZAV_sw_find_result_by_guid(context_, L"1", &result), 210);
    }

    const Toolkit toolkit_;
    ZAVCtx* handle_ = nullptr;
    ZAVSwCtx* context_ = nullptr;
};

TEST_F(SWThrowingCallbackTest, MakesNoContext) {
    const int messages = everyMessage(
        [this] {
            openHandle();
            context_ = reinterpret_cast<ZAVSwCtx*>(this);
        },
        [this] { return swInit(&context_); },
        [this] {
            if (context_ != nullptr) {
                EXPECT_EQ(ZAV_sw_free(context_), 0);
            }
            EXPECT_EQ(ZAV_free(handle_), 0);
        });
    EXPECT_EQ(messages, 4);
}

// An option is stored before it is logged.
TEST_F(SWThrowingCallbackTest, LeavesAnOptionStored) {
    const std::vector<std::function<int()>> options = {
        [this] { return ZAV_sw_setopt_variable(context_, L"a", L"b", L"c"); },
        [this] { return ZAV_sw_setopt_config(context_, L"a", L"b", L"c"); },
        [this] { return ZAV_sw_setopt_variable(context_, nullptr, L"b", L"c"); },
        [this] { return ZAV_sw_setopt_config(context_, nullptr, L"b", L"c"); },
    };
    open();
    for (const auto& option : options) {
        host_ = {0, 1};
        EXPECT_EQ(option(), 5);
        expectLockFree();
    }
    EXPECT_EQ(context_->variables.size(), 1U);
    EXPECT_EQ(context_->pluginConfigs.at(L"a").size(), 1U);
    close();
}

TEST_F(SWThrowingCallbackTest, AbortsAnEvaluationWithoutResultsButKeepsTheContext) {
    const int messages = everyMessage([this] { open(); }, [this] { return evaluate(); },
                                      [this] {
                                          expectLockFree();
                                          ZAVSwResult* result = nullptr;
                                          if (context_->returnCode != 0) expectNoResults();
                                          EXPECT_EQ(evaluate(), 0);
                                          EXPECT_EQ(ZAV_sw_find_result_by_guid(context_, L"1", &result), 0);
                                          const wchar_t* value = nullptr;
                                          EXPECT_EQ(ZAV_sw_get_value(context_, result, L"a", &value), 0);
                                          EXPECT_STREQ(value, L"b");
                                          close();
                                      });
    // Four names with two messages each, the command, two lines, the exit code, two doctypes, two parsings.
    EXPECT_EQ(messages, 16);
}

TEST_F(SWThrowingCallbackTest, AbortsAFailedEvaluationToo) {
    const std::vector<std::function<void()>> failures = {
        [this] { toolkit_.put("status", "3"); },
        [this] { toolkit_.remove("status"), toolkit_.remove("warnings.xml"); },
        [this] { toolkit_.remove("output.xml"); },
        [this] { toolkit_.remove("quorvis"); },
    };
    open();
    for (const auto& prepare : failures) {
        prepare();
        host_ = {};
        ASSERT_NE(evaluate(), 0);
        const int messages = host_.received;
        for (int nth = 1; nth <= messages; ++nth) {
            host_ = {0, nth};
            EXPECT_EQ(evaluate(), 5) << nth;
            expectLockFree();
            expectNoResults();
        }
    }
    close();
}

TEST_F(SWThrowingCallbackTest, AnswersNoQuery) {
    open();
    ASSERT_EQ(evaluate(), 0);
    ZAVSwResult* result = nullptr;
    ASSERT_EQ(ZAV_sw_find_result_by_guid(context_, L"1", &result), 0);
    int number = 4711;
    unsigned int count = 4711;
    const wchar_t* text = L"untouched";
    const wchar_t** texts = &text;
    ZAVSwResult** results = &result;
    // The number of messages of each query.
    const std::vector<std::pair<int, std::function<int()>>> queries = {
        {1, [&] { return ZAV_sw_get_results(context_, &results, &number); }},
        {1, [&] { return ZAV_sw_get_results(context_, nullptr, &number); }},
        {1, [&] { return ZAV_sw_find_results_by_guid(context_, L"1", &results, &count); }},
        {1, [&] { return ZAV_sw_find_results_by_guid(context_, L"none", &results, &count); }},
        {1, [&] { return ZAV_sw_find_results_by_guid(context_, L"1", nullptr, &count); }},
        {1, [&] { return ZAV_sw_get_variables(context_, result, &texts, &number); }},
        {1, [&] { return ZAV_sw_get_metadata(context_, nullptr, &text); }},
        {1, [&] { return ZAV_sw_get_guid(context_, nullptr, &text); }},
        {1, [&] { return ZAV_sw_get_warnings(context_, &texts, &number); }},
        {2, [&] { return ZAV_sw_get_warnings(context_, nullptr, &number); }},
        {1, [&] { return ZAV_sw_get_returncode(context_, &number); }},
        {1, [&] { return ZAV_sw_get_returncode(context_, nullptr); }},
    };
    for (std::size_t i = 0; i < queries.size(); ++i) {
        for (int nth = 1; nth <= queries[i].first; ++nth) {
            host_ = {0, nth};
            EXPECT_EQ(queries[i].second(), 5) << i;
            EXPECT_EQ(host_.received, nth) << i;
            expectLockFree();
        }
        EXPECT_EQ(number, 4711) << i;
        EXPECT_EQ(count, 4711U) << i;
        EXPECT_STREQ(text, L"untouched") << i;
        EXPECT_EQ(texts, &text) << i;
        EXPECT_EQ(results, &result) << i;
    }
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context_, L"1", &results, &count), 0);
    EXPECT_EQ(count, 1U);
    close();
}

TEST_F(SWThrowingCallbackTest, StillReleasesAContext) {
    const int messages = everyMessage(
        [this] {
            open();
            EXPECT_EQ(evaluate(), 0);
        },
        [this] { return ZAV_sw_free(context_); }, [this] { EXPECT_EQ(ZAV_free(handle_), 0); });
    EXPECT_EQ(messages, 3);
}

}  // namespace
}  // namespace swtest
