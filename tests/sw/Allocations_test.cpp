// Every allocation of every call fails: alone, or with all later ones.
#include <functional>

#include "sw/ZAVSwCtx.h"
#include "tests/support/AllocationTest.h"
#include "tests/sw/Toolkit.h"

namespace swtest {
namespace {

using zavtest::liveBlocks;
using zavtest::Shortage;

constexpr int kPlenty = 40;
constexpr int kGuids = 30;

// Large enough that every table and every arena grows.
std::string largeOutput() {
    std::string output = "<?xml version='1.0'?><!DOCTYPE QEL><QEL>";
    for (int i = 0; i < kPlenty; ++i) {
        const std::string text = std::to_string(i % kGuids);
        output += "<MatchedSignature guid='" + text + "' name='n'><Variable name='b' value='" +
                  std::string(300, 'x') + "'/><Variable name='a' value='1'/><Metadata><B" + text + ">1</B" +
                  text + "></Metadata></MatchedSignature>";
    }
    return output + "</QEL>";
}

std::string largeWarnings() {
    std::string warnings = "<Events>";
    for (int i = 0; i < kPlenty; ++i) warnings += "<Event>" + std::string(40, 'w') + "</Event>";
    return warnings + "</Events>";
}

class SWAllocationsTest : public zavtest::AllocationTest {
  protected:
    SWAllocationsTest() {
        toolkit_.scannerWrites(largeOutput(), largeWarnings());
        toolkit_.put("lines", "one\n" + std::string(5000, 'x') + "\nthree\n");
        open();  // allocates what the system's libraries keep until the process ends
        EXPECT_EQ(evaluate(), 0);
        expectResults();
        close();
    }

    int swInit(ZAVSwCtx** context) { return ZAV_sw_init(handle_, countMessage, &messages_, context); }
    void openHandle() {
        ASSERT_EQ(ZAV_init("tests", nullptr, nullptr, tempPath().c_str(), directory_.c_str(), &handle_), 0);
    }
    void open() {
        openHandle();
        ASSERT_EQ(swInit(&context_), 0);
        ASSERT_EQ(ZAV_sw_setopt_variable(context_, L"known", L"1", L"2"), 0);
        ASSERT_EQ(ZAV_sw_setopt_config(context_, L"known", L"1", L"2"), 0);
    }
    void close() {
        ASSERT_EQ(ZAV_sw_free(context_), 0);
        ASSERT_EQ(ZAV_free(handle_), 0);
    }
    int evaluate() {
        const wchar_t* signatures[] = {L"<Signature/>", L"<Signature a='a text that needs memory'/>"};
        return ZAV_sw_evaluate_multi(context_, signatures, 2);
    }

    // The test hangs if the logger's lock is still held.
    int returnCode() {
        const int before = messages_;
        int code = 0;
        EXPECT_EQ(ZAV_sw_get_returncode(context_, &code), 0);
        EXPECT_EQ(messages_, before + 1);
        return code;
    }

    void expectResults() {
        ZAVSwResult** results = nullptr;
        int count = 0;
        ASSERT_EQ(ZAV_sw_get_results(context_, &results, &count), 0);
        ASSERT_EQ(count, kPlenty);
        for (int i = 0; i < count; ++i) {
            const wchar_t* text = nullptr;
            const wchar_t** names = nullptr;
            int variables = 0;
            ASSERT_EQ(ZAV_sw_get_guid(context_, results[i], &text), 0);
            EXPECT_EQ(text, std::to_wstring(i % kGuids));
            ASSERT_EQ(ZAV_sw_get_variables(context_, results[i], &names, &variables), 0);
            ASSERT_EQ(variables, 2);
            EXPECT_STREQ(names[0], L"a");
            ASSERT_EQ(ZAV_sw_get_metadata(context_, results[i], &text), 0);
            EXPECT_EQ(std::wstring(text).find(L"<Metadata>"), 0U);
        }
        const wchar_t** warnings = nullptr;
        ASSERT_EQ(ZAV_sw_get_warnings(context_, &warnings, &count), 0);
        EXPECT_EQ(count, kPlenty);
    }

    void expectNoResults() {
        ZAVSwResult* result = nullptr;
        const wchar_t** warnings = nullptr;
        int count = 0;
        EXPECT_EQ(returnCode(), -1);
        EXPECT_EQ(ZAV_sw_find_result_by_guid(context_, L"1", &result), 210);
        EXPECT_EQ(ZAV_sw_get_warnings(context_, &warnings, &count), 0);
        EXPECT_EQ(warnings, nullptr);
    }

    const Toolkit toolkit_;
    const std::wstring directory_ = toolkit_.path().wstring();
    ZAVCtx* handle_ = nullptr;
    ZAVSwCtx* context_ = nullptr;
};

TEST_P(SWAllocationsTest, MakeContext) {
    everyAllocation([this](int nth) {
        openHandle();
        const bool reached = makesContextOrNone<ZAVSwCtx>(
            nth, [this](ZAVSwCtx** context) { return swInit(context); }, ZAV_sw_free);
        EXPECT_EQ(ZAV_free(handle_), 0);
        return reached;
    });
}

// An option is either stored completely or not at all.
TEST_P(SWAllocationsTest, SetOption) {
    const std::wstring text(40, L't');
    for (const wchar_t* const name : {L"known", L"a name that needs memory of its own"}) {
        everyAllocation([&](int nth) {
            open();
            const Attempt attempt = failAt(
                nth, [&] { return ZAV_sw_setopt_variable(context_, name, text.c_str(), text.c_str()); });
            for (const auto& [key, preset] : context_->variables) {
                EXPECT_TRUE((preset.value == L"1" && preset.scope == L"2") ||
                            (preset.value == text && preset.scope == text))
                    << nth;
            }
            close();
            return attempt.reached;
        });
        everyAllocation([&](int nth) {
            open();
            const Attempt attempt =
                failAt(nth, [&] { return ZAV_sw_setopt_config(context_, name, text.c_str(), text.c_str()); });
            for (const auto& [plugin, settings] : context_->pluginConfigs) EXPECT_FALSE(settings.empty());
            close();
            return attempt.reached;
        });
    }
}

TEST_P(SWAllocationsTest, Evaluation) {
    everyAllocation([this](int nth) {
        open();
        const Attempt attempt = failAt(nth, [this] { return evaluate(); });
        if (attempt.code == 0) {
            expectResults();
        } else {
            expectNoResults();
        }
        close();
        return attempt.reached;
    });
}

TEST_P(SWAllocationsTest, NextEvaluationSucceeds) {
    open();
    int nth = 1;
    for (bool reached = true; reached && !HasFailure(); nth += 7) {
        const Attempt attempt = failAt(nth, [this] { return evaluate(); });
        reached = attempt.reached;
        ASSERT_EQ(evaluate(), 0) << nth << ": " << attempt.code;
        expectResults();
    }
    EXPECT_GT(nth, 100);
    close();
}

TEST_P(SWAllocationsTest, Queries) {
    open();
    ASSERT_EQ(evaluate(), 0);
    ZAVSwResult** results = nullptr;
    ZAVSwResult* result = nullptr;
    const wchar_t* text = nullptr;
    const wchar_t** texts = nullptr;
    int number = 0;
    ASSERT_EQ(ZAV_sw_find_result_by_guid(context_, L"1", &result), 0);
    const std::vector<std::function<int()>> queries = {
        [&] { return ZAV_sw_get_results(context_, &results, &number); },
        [&] { return ZAV_sw_find_result_by_guid(context_, L"1", &result); },
        [&] { return ZAV_sw_get_value(context_, result, L"a", &text); },
        [&] { return ZAV_sw_get_variables(context_, result, &texts, &number); },
        [&] { return ZAV_sw_get_metadata(context_, result, &text); },
        [&] { return ZAV_sw_get_guid(context_, result, &text); },
        [&] { return ZAV_sw_get_warnings(context_, &texts, &number); },
        [&] { return ZAV_sw_get_returncode(context_, &number); },
    };
    const long blocks = liveBlocks();
    for (const auto& query : queries) {
        int nth = 1;
        for (bool reached = true; reached; ++nth) {
            const Attempt attempt = failAt(nth, query);
            reached = attempt.reached;
            EXPECT_EQ(liveBlocks(), blocks);
            EXPECT_EQ(returnCode(), 0);
        }
    }
    expectResults();
    close();
}

// Looks each identifier up for the first time.
TEST_P(SWAllocationsTest, IdentifierLookup) {
    everyAllocation([this](int nth) {
        open();
        EXPECT_EQ(evaluate(), 0);
        ZAVSwResult** const untouched = reinterpret_cast<ZAVSwResult**>(this);
        bool reached = false;
        for (const auto& [guid, right] : {std::pair(L"1", 0), {L"an identifier that is nowhere", 210}}) {
            ZAVSwResult** results = untouched;
            unsigned int count = 0;
            const auto find = [&, wanted = guid] {
                return ZAV_sw_find_results_by_guid(context_, wanted, &results, &count);
            };
            const Attempt attempt = failAt(nth, find, right);
            reached = reached || attempt.reached;
            EXPECT_EQ(results == untouched, attempt.code != 0) << nth;
            EXPECT_EQ(find(), right) << nth;
            EXPECT_EQ(count, right == 0 ? 2U : 0U) << nth;
        }
        close();
        return reached;
    });
}

TEST_P(SWAllocationsTest, ReleaseContext) {
    everyAllocation([this](int nth) {
        open();
        EXPECT_EQ(evaluate(), 0);
        const Attempt attempt = failAt(nth, [this] { return ZAV_sw_free(context_); });
        EXPECT_EQ(ZAV_free(handle_), 0);
        return attempt.reached;
    });
}

INSTANTIATE_TEST_SUITE_P(Fail, SWAllocationsTest, testing::Values(Shortage::Once, Shortage::ForGood),
                         zavtest::nameOf);

}  // namespace
}  // namespace swtest
