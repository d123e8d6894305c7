#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/LibraryHost.h"
#include "tests/support/NothingLeft.h"
#include "tests/sw/Toolkit.h"

namespace swtest {

using zavtest::Messages;
using zavtest::Texts;
using WideTexts = std::vector<std::wstring>;
// The name and the value of each variable.
using Variables = std::vector<std::pair<std::wstring, std::wstring>>;

// A host with a software context and a toolkit of its own.
//     scannerWrites("<QEL><MatchedSignature guid='1'/></QEL>");
//     ASSERT_EQ(run(), 0);
//     EXPECT_EQ(guids(), WideTexts{L"1"});
class Evaluation : public Toolkit, public zavtest::LibraryHost {
  public:
    // `tempName` is the name of the library's temporary directory. Both names may hold whatever a path may hold.
    explicit Evaluation(const std::string& toolkitName = "toolkit", const std::string& tempName = "temp");
    ~Evaluation();
    Evaluation(const Evaluation&) = delete;
    Evaluation& operator=(const Evaluation&) = delete;

    ZAVSwCtx* context() const { return context_; }

    int run() const { return ZAV_sw_evaluate(context_, L"<Signature/>"); }

    // When the library refuses, each fails the test and returns an empty result.
    int returnCode() const;
    std::vector<ZAVSwResult*> results() const;
    WideTexts guids() const;
    std::wstring metadata(ZAVSwResult* result) const;
    Variables variables(ZAVSwResult* result) const;
    WideTexts warnings() const;
    // Null if there is no such result.
    ZAVSwResult* find(const wchar_t* guid) const;

    // The lines that the scanner printed since the last call of a take function.
    Texts takePrinted();

    // Releases context and handle. No other call may follow.
    void close();

  private:
    ZAVSwCtx* context_ = nullptr;
};

// A test with an evaluation that must leave nothing behind: no file, no descriptor, no child.
class EvaluationTest : public testing::Test, private zavtest::NothingLeft, protected Evaluation {};

}  // namespace swtest
