#pragma once

#include "tests/sw/Evaluation.h"

namespace swtest {

inline const wchar_t untouchedText[] = L"untouched";
inline constexpr int untouchedNumber = 4711;

// The output arguments of a query, which must be written only on success.
struct Outputs {
    ZAVSwResult* const untouchedResult = reinterpret_cast<ZAVSwResult*>(this);
    int number = untouchedNumber;
    unsigned int count = untouchedNumber;
    const wchar_t* text = untouchedText;
    const wchar_t** texts = &text;
    ZAVSwResult* result = untouchedResult;
    ZAVSwResult** results = &result;

    bool areUntouched() const {
        return number == untouchedNumber && count == untouchedNumber && text == untouchedText &&
               texts == &text && result == untouchedResult && results == &result;
    }
};

// The states of a context that the checks distinguish.
enum class State { New, Evaluated, Failed, Changed };

// The input arguments of a query.
struct Given {
    ZAVSwCtx* context;
    ZAVSwResult* result;  // of the last successful evaluation; null if there is none
};

class SWQueryTest : public EvaluationTest {
  protected:
    SWQueryTest() {
        scannerWrites(
            "<QEL><MatchedSignature guid='a' name='n'><Variable name='v' value='1'/>"
            "<Variable name='Empty'/><Metadata>m</Metadata></MatchedSignature>"
            "<MatchedSignature guid='b'/><MatchedSignature guid='a'/></QEL>",
            "<Events><Event>1</Event><Event>2</Event></Events>");
    }

    void enter(State state) {
        if (state == State::New) return;
        ASSERT_EQ(run(), 0);
        first_ = results().at(0);
        if (state == State::Changed) {
            ASSERT_EQ(ZAV_sw_setopt_variable(context(), L"a", L"b", L"c"), 0);
        }
        if (state == State::Failed) {
            put("status", "9");
            first_ = nullptr;
            ASSERT_EQ(run(), 203);
        }
        takeMessages();
    }

    Given given() const { return {context(), first_}; }

    ZAVSwResult* first_ = nullptr;
};

}  // namespace swtest
