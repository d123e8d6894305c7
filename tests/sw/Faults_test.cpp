// Each system call of an evaluation fails once: the evaluation returns its documented code, nothing is left behind,
// and the next evaluation succeeds.
#include "tests/support/Faults.h"
#include "tests/support/FaultCase.h"

#include <cerrno>
#include <functional>

#include "tests/sw/Evaluation.h"

namespace swtest {
namespace {

using zavtest::Codes;
using zavtest::Fault;
using zavtest::FaultCase;
using zavtest::onAnything;

bool isConfiguration(const std::string& path) {
    return path.find("/cfg_") != std::string::npos;
}
bool isSignatures(const std::string& path) {
    return path.find("/sig_") != std::string::npos;
}
bool isWarnings(const std::string& path) {
    return path.find("/warning_") != std::string::npos;
}

// Files that the library writes. A message that cannot be formatted is dropped without further effect.
FaultCase onFiles(const char* function, int error, int configuration, int signatures) {
    return {function, error, [=](const std::string& path) {
                return Codes{isConfiguration(path) ? configuration : isSignatures(path) ? signatures : 0};
            }};
}

// Files that the scanner writes.
FaultCase onResults(const char* function, int error) {
    return {function, error, [](const std::string& path) { return Codes{isWarnings(path) ? 205 : 204}; }};
}

class SWFaultTest : public testing::TestWithParam<FaultCase> {};

TEST_P(SWFaultTest, ReturnsItsCodeAndTheNextRunSucceeds) {
    const zavtest::NothingLeft nothingLeft;
    int failures = 0;
    for (int nth = 1;; ++nth) {
        Evaluation evaluation;
        evaluation.put("lines", "one\ntwo\n");
        evaluation.scannerWrites("<QEL><MatchedSignature guid='1'/></QEL>", "<Events><Event/></Events>");
        {
            const Fault fault(GetParam().function, GetParam().error, nth);
            const int code = evaluation.run();
            if (fault.failures() == 0) break;
            EXPECT_TRUE(GetParam().codes(fault.path()).contains(code))
                << "call " << nth << ", " << fault.path() << ": " << code;
        }
        ++failures;
        EXPECT_EQ(evaluation.run(), 0) << nth;
        EXPECT_EQ(evaluation.guids(), WideTexts{L"1"}) << nth;
        EXPECT_EQ(evaluation.warnings().size(), 1U) << nth;
    }
    EXPECT_GT(failures, 0);
}

INSTANTIATE_TEST_SUITE_P(
    SystemCall, SWFaultTest,
    testing::ValuesIn(zavtest::withCommonFaults(
        ZAV_ERROR_SW_SCANNER,
        {onFiles("fopen", EMFILE, 0, 201), onFiles("fopen", EACCES, 0, 201), onFiles("fopen", ENOMEM, 5, 5),
         onFiles("fclose", ENOSPC, 201, 201), onAnything("fwrite", ENOSPC, 201), onResults("open", EACCES),
         onResults("open", EMFILE),
         // A scanner whose output is no longer read may end with an error.
         FaultCase{"read", EIO,
                   [](const std::string& kind) {
                       return kind == "pipe" ? Codes{0, 203} : Codes{204, 205};
                   }}})),
    [](const auto& test) { return test.param.function + std::to_string(test.param.error); });

using SWWriteFaultTest = EvaluationTest;

// Each function with its code for a signatures file. No write follows the failed one.
TEST_F(SWWriteFaultTest, AFailedWriteIsTheLastOneAndIsLogged) {
    scannerWrites("<QEL/>");
    ASSERT_EQ(ZAV_sw_setopt_variable(context(), L"a", L"b", L"c"), 0);
    ASSERT_EQ(ZAV_sw_setopt_config(context(), L"a", L"b", L"c"), 0);
    const wchar_t* signatures[] = {L"A", L"B"};
    const std::vector<std::pair<std::function<int()>, int>> evaluations = {
        {[&] { return ZAV_sw_evaluate(context(), L"A"); }, 201},
        {[&] { return ZAV_sw_evaluate_multi(context(), signatures, 2); }, 202},
        {[&] { return ZAV_sw_evaluate_file(context(), L"A"); }, 0},
    };
    for (const auto& [evaluate, signaturesCode] : evaluations) {
        for (int nth = 1;; ++nth) {
            takeMessages();
            const Fault fault("fwrite", ENOSPC, nth);
            const int code = evaluate();
            if (fault.failures() == 0) break;
            EXPECT_EQ(code, isConfiguration(fault.path()) ? 201 : signaturesCode) << nth;
            EXPECT_EQ(fault.callsBehind(), 0) << nth;
            const char* const function =
                isConfiguration(fault.path()) ? "SW_CreateConfigFile()" : "SW_CreateSignatures()";
            const Messages messages = takeMessages();
            EXPECT_EQ(messages[messages.size() - 2],
                      (zavtest::Message{0, 4, function, "Error during write [" + fault.path() + "]"}));
            EXPECT_EQ(messages.back(), (zavtest::Message{0, 4, function,
                                                         "Cannot write [" + fault.path() +
                                                             "]: ENOSPC (no space left on device)"}));
            EXPECT_EQ(returnCode(), -1);
        }
    }
}

// Each piece is written with a separate call.
TEST_F(SWWriteFaultTest, PiecesAreWrittenOneByOne) {
    scannerWrites("<QEL/>");
    const wchar_t* signatures[] = {L"A", L"B", L"C"};
    int writes = 0;
    for (int nth = 1;; ++nth) {
        const Fault fault("fwrite", ENOSPC, nth);
        ZAV_sw_evaluate_multi(context(), signatures, 3);
        if (fault.failures() == 0) break;
        if (isSignatures(fault.path())) ++writes;
    }
    EXPECT_EQ(writes, 6);
}

TEST_F(SWWriteFaultTest, WithoutAFreeNameNothingIsWrittenOrLaunched) {
    scannerWrites("<QEL/>");
    const Fault fault("access", EEXIST, Fault::kEvery);
    EXPECT_EQ(run(), 201);
    const Messages messages = takeMessages();
    ASSERT_EQ(messages.size(), 2U);
    EXPECT_EQ(messages[0], (zavtest::Message{2, 4, "SW_CreateConfigFile", "Creating a config file []"}));
    EXPECT_EQ(messages[1].function, "SW_CreateConfigFile()");
    EXPECT_TRUE(messages[1].text.starts_with("No name is free in [" + temp().string())) << messages[1];
    EXPECT_FALSE(std::filesystem::exists(path() / "seen_configuration"));
}

TEST_F(SWWriteFaultTest, ADirectoryThatCannotBeRemovedIsKeptAndTheFailureIsLogged) {
    ZAVSwCtx* other = nullptr;
    zavtest::LogRecorder log;
    ASSERT_EQ(ZAV_sw_init(handle(), zavtest::LogRecorder::callback, &log, &other), 0);
    const Fault fault("rmdir", EBUSY, 1);
    EXPECT_EQ(ZAV_sw_free(other), 0);
    ASSERT_EQ(fault.failures(), 1);
    EXPECT_EQ(log.messages.back(), (zavtest::Message{2, 4, "TemporaryDir::deleteDirectory()",
                                                     "Deleting directory [" + fault.path() + "] - failed"}));
    std::filesystem::remove(fault.path());
}

TEST(SWWorkspaceFault, AContextIsMadeWithoutAWorkspace) {
    const Evaluation evaluation;
    ZAVSwCtx* context = nullptr;
    {
        const Fault fault("mkdir", ENOSPC, Fault::kEvery);
        EXPECT_EQ(ZAV_sw_init(evaluation.handle(), nullptr, nullptr, &context), 0);
    }
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(ZAV_sw_evaluate(context, L"A"), 201);
    EXPECT_EQ(ZAV_sw_free(context), 0);
}

}  // namespace
}  // namespace swtest
