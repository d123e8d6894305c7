// Threads that evaluate at the same time, each with its own handle.
#include <barrier>

#include "tests/support/SerialCallback.h"
#include "tests/support/Threads.h"
#include "tests/sw/Evaluation.h"

namespace swtest {
namespace {

constexpr int kThreads = 8;

TEST(SWConcurrent, EveryThreadGetsTheResultsOfItsOwnScanner) {
    const zavtest::NothingLeft nothingLeft;
    zavtest::inThreads(kThreads, [](int number) {
        Evaluation evaluation;
        for (int round = 0; round < 5; ++round) {
            const std::string guid = std::to_string(100 * number + round);
            evaluation.scannerWrites("<QEL><MatchedSignature guid='" + guid + "'/></QEL>",
                                     "<Events><Event>" + guid + "</Event></Events>");
            const std::wstring wide(guid.begin(), guid.end());
            const std::wstring signature = L"<S>" + wide + L"</S>";
            ASSERT_EQ(ZAV_sw_evaluate(evaluation.context(), signature.c_str()), 0);
            EXPECT_EQ(evaluation.guids(), WideTexts{wide});
            EXPECT_EQ(evaluation.warnings(), WideTexts{L"<Event>" + wide + L"</Event>"});
            EXPECT_NE(evaluation.read("seen_signatures").find("<S>" + guid + "</S>"), std::string::npos);
        }
    });
}

TEST(SWConcurrent, EveryThreadLearnsTheStatusOfItsOwnScanner) {
    const zavtest::NothingLeft nothingLeft;
    zavtest::inThreads(kThreads, [](int number) {
        Evaluation evaluation;
        evaluation.scannerIs("CopyFiles");
        for (int round = 0; round < 5; ++round) {
            const int status = 4 + 10 * number + round;
            evaluation.put("status", std::to_string(status));
            ASSERT_EQ(evaluation.run(), 203);
            EXPECT_EQ(evaluation.returnCode(), status);
        }
    });
}

// Lookups and getters of values do not change a context, so threads may share one for these.
TEST(SWConcurrent, ThreadsMayReadTheSameResults) {
    constexpr int kResults = 500;
    constexpr std::size_t kLength = 5000;  // so that several threads request a value before it is ready
    std::string output = "<QEL>";
    for (int i = 0; i < kResults; ++i) {
        const std::string text = std::to_string(i);
        output += "<MatchedSignature guid='" + text + "'><Variable name='v' value='" +
                  std::string(kLength, 'a') + text + "'/></MatchedSignature>";
    }
    Evaluation evaluation;
    evaluation.scannerWrites(output + "</QEL>");
    ASSERT_EQ(evaluation.run(), 0);
    std::barrier together(kThreads);
    zavtest::inThreads(kThreads, [&](int) {
        for (int i = 0; i < kResults; ++i) {
            const std::wstring text = std::to_wstring(i);
            ZAVSwResult* result = nullptr;
            const wchar_t* value = L"";
            together.arrive_and_wait();
            EXPECT_EQ(ZAV_sw_find_result_by_guid(evaluation.context(), text.c_str(), &result), 0);
            EXPECT_EQ(ZAV_sw_get_value(evaluation.context(), result, L"v", &value), 0);
            EXPECT_EQ(value, std::wstring(kLength, L'a') + text);
        }
    });
}

TEST(SWConcurrent, TheCallbackIsNeverEnteredByTwoThreadsAtOnce) {
    const Toolkit toolkit;
    toolkit.scannerWrites("<QEL/>");
    const auto use = [](ZAVCtx* handle, zavtest::CountingHost& host) {
        ZAVSwCtx* context = nullptr;
        ASSERT_EQ(ZAV_sw_init(handle, zavtest::CountingHost::callback, &host, &context), 0);
        for (int i = 0; i < 200; ++i) ASSERT_EQ(ZAV_sw_setopt_variable(context, L"a", L"b", L"c"), 0);
        EXPECT_EQ(ZAV_sw_evaluate(context, L""), 0);
        EXPECT_EQ(ZAV_sw_free(context), 0);
    };
    EXPECT_GE(zavtest::messagesOfThreads(kThreads, toolkit.path(), use), kThreads * 220L);
}

}  // namespace
}  // namespace swtest
