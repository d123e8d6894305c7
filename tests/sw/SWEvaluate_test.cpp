// Complete evaluations with real scanner processes.
#include <algorithm>

#include "kest/Text.h"
#include "sw/ZAVSwCtx.h"
#include "tests/sw/Evaluation.h"

namespace swtest {
namespace {

const std::string kHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<Signatures>\n";
const std::string kTail = "</Signatures>\n";
const wchar_t* const kSignature = L"<Signature/>";

// The three functions; the content of the signatures does not matter.
enum class Entry { One, Multi, File };

class SWEntryTest : public EvaluationTest, public testing::WithParamInterface<Entry> {
  protected:
    int evaluate(ZAVSwCtx* on) const {
        const wchar_t* signatures[] = {kSignature};
        if (GetParam() == Entry::One) return ZAV_sw_evaluate(on, kSignature);
        if (GetParam() == Entry::Multi) return ZAV_sw_evaluate_multi(on, signatures, 1);
        return ZAV_sw_evaluate_file(on, L"/any");
    }
    int evaluateNull(ZAVSwCtx* on) const {
        if (GetParam() == Entry::One) return ZAV_sw_evaluate(on, nullptr);
        if (GetParam() == Entry::Multi) return ZAV_sw_evaluate_multi(on, nullptr, 1);
        return ZAV_sw_evaluate_file(on, nullptr);
    }
    int evaluate() const { return evaluate(context()); }

    // The getters have nothing to return.
    void expectNoResults() {
        ZAVSwResult** all = nullptr;
        int count = 0;
        EXPECT_EQ(ZAV_sw_get_results(context(), &all, &count), 206);
        EXPECT_EQ(find(L"1"), nullptr);
        EXPECT_EQ(warnings(), WideTexts());
    }

    const std::string output_ = "<QEL><MatchedSignature guid='1'/></QEL>";
    const std::string events_ = "<Events><Event/></Events>";
};

INSTANTIATE_TEST_SUITE_P(Entries, SWEntryTest, testing::Values(Entry::One, Entry::Multi, Entry::File),
                         [](const auto& test) {
                             return test.param == Entry::One     ? "One"
                                    : test.param == Entry::Multi ? "Multi"
                                                                 : "File";
                         });

TEST_P(SWEntryTest, YieldsResultsAndWarnings) {
    scannerWrites(output_, events_);
    EXPECT_EQ(evaluate(), 0);
    EXPECT_EQ(returnCode(), 0);
    EXPECT_EQ(guids(), WideTexts{L"1"});
    EXPECT_EQ(warnings(), WideTexts{L"<Event/>"});
}

TEST_P(SWEntryTest, LogsNothingOfItsOwn) {
    scannerWrites(output_);
    ASSERT_EQ(evaluate(), 0);
    for (const zavtest::Message& message : takeMessages()) {
        EXPECT_EQ(message.component, 4);
        EXPECT_FALSE(message.function.starts_with("ZAV_sw_evaluate")) << message;
    }
}

TEST_P(SWEntryTest, ANullContextIsRefusedFirst) {
    EXPECT_EQ(evaluate(nullptr), 3);
    EXPECT_EQ(evaluateNull(nullptr), 3);
}

TEST_P(SWEntryTest, NullSignaturesAreRefusedSilentlyAndTheResultsStay) {
    scannerWrites(output_, events_);
    ASSERT_EQ(evaluate(), 0);
    takeMessages();
    EXPECT_EQ(evaluateNull(context()), 202);
    EXPECT_EQ(takeMessages(), Messages());
    EXPECT_EQ(guids(), WideTexts{L"1"});
    EXPECT_EQ(warnings().size(), 1U);
}

TEST_P(SWEntryTest, TheSecondEvaluationsResultsReplaceTheFirstOnes) {
    scannerWrites(output_, events_);
    ASSERT_EQ(evaluate(), 0);
    ZAVSwResult** found = nullptr;
    unsigned int count = 0;
    ASSERT_EQ(ZAV_sw_find_results_by_guid(context(), L"1", &found, &count), 0);
    scannerWrites("<QEL><MatchedSignature guid='2'/><MatchedSignature guid='2'/></QEL>");
    ASSERT_EQ(evaluate(), 0);
    EXPECT_EQ(guids(), (WideTexts{L"2", L"2"}));
    EXPECT_EQ(warnings(), WideTexts());
    EXPECT_EQ(ZAV_sw_find_results_by_guid(context(), L"1", &found, &count), 210);
    EXPECT_EQ(find(L"1"), nullptr);
}

TEST_P(SWEntryTest, AScannerThatIsMissingIs203WithoutResults) {
    scannerWrites(output_, events_);
    ASSERT_EQ(evaluate(), 0);
    remove("quorvis");
    EXPECT_EQ(evaluate(), 203);
    EXPECT_EQ(returnCode(), -1);
    expectNoResults();
}

TEST_P(SWEntryTest, AScannerThatFailsHasItsStatusKeptAndItsFilesIgnored) {
    scannerWrites(output_, events_);
    ASSERT_EQ(evaluate(), 0);
    for (const auto& [status, code] : {std::pair(3, 202), std::pair(1, 203), std::pair(4, 203)}) {
        put("status", std::to_string(status));
        EXPECT_EQ(evaluate(), code);
        EXPECT_EQ(returnCode(), status);
        expectNoResults();
    }
}

TEST_P(SWEntryTest, AMissingOutputIs204AndTheGettersReturnNothing) {
    scannerIs("CopyFiles");
    put("warnings.xml", events_);
    EXPECT_EQ(evaluate(), 204);
    EXPECT_EQ(returnCode(), 0);
    EXPECT_EQ(guids(), WideTexts());
    EXPECT_EQ(warnings(), WideTexts());
}

TEST_P(SWEntryTest, MissingWarningsAre205AndTheResultsCanBeRead) {
    scannerIs("CopyFiles");
    put("output.xml", output_);
    EXPECT_EQ(evaluate(), 205);
    EXPECT_EQ(returnCode(), 0);
    EXPECT_EQ(guids(), WideTexts{L"1"});
    EXPECT_EQ(warnings(), WideTexts());
}

// A configuration file that cannot be created is not an error of the library; the scanner fails.
TEST_P(SWEntryTest, ALostWorkspaceShowsWhereSignaturesAreWritten) {
    scannerWrites(output_, events_);
    ASSERT_EQ(evaluate(), 0);
    std::filesystem::remove_all(kest::narrow(context()->tmpDir->getBasePath()));
    takeMessages();
    const int expected = GetParam() == Entry::One ? 201 : GetParam() == Entry::Multi ? 202 : 204;
    EXPECT_EQ(evaluate(), expected);
    const Messages messages = takeMessages();
    const bool toldOfAWrite = std::any_of(
        messages.begin(), messages.end(),
        [](const zavtest::Message& message) { return message.text.starts_with("Error during write"); });
    EXPECT_FALSE(toldOfAWrite);
    const bool toldWhy = std::any_of(messages.begin(), messages.end(), [](const zavtest::Message& message) {
        return message.level == 0 && message.text.starts_with("Cannot make [") &&
               message.text.ends_with("]: ENOENT (no such file or directory)");
    });
    EXPECT_TRUE(toldWhy);
    if (GetParam() != Entry::File) {
        EXPECT_EQ(returnCode(), -1);
        expectNoResults();
    }
}

TEST_P(SWEntryTest, FilesStayUntilTheContextIsReleased) {
    scannerWrites(output_, events_);
    const std::filesystem::path workspace = kest::narrow(context()->tmpDir->getBasePath());
    const auto files = [&workspace] {
        return std::distance(std::filesystem::directory_iterator(workspace),
                             std::filesystem::directory_iterator());
    };
    const int each = GetParam() == Entry::File ? 3 : 4;
    ASSERT_EQ(evaluate(), 0);
    EXPECT_EQ(files(), each);
    ASSERT_EQ(evaluate(), 0);
    EXPECT_EQ(files(), 2 * each);
    close();
    EXPECT_FALSE(std::filesystem::exists(workspace));
}

using SWEvaluateTest = EvaluationTest;

TEST_F(SWEvaluateTest, OneSignatureGoesToTheScannerAsItStands) {
    scannerWrites("<QEL/>");
    EXPECT_EQ(ZAV_sw_evaluate(context(), L"<Signature a=\"<&\x00E9\"/>"), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + "<Signature a=\"<&\xE9\"/>" + kTail);
    EXPECT_EQ(ZAV_sw_evaluate(context(), L""), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + kTail);
}

TEST_F(SWEvaluateTest, ManySignaturesGoInOneFileAndOneRun) {
    scannerWrites("<QEL/>");
    const wchar_t* signatures[] = {L"A", L"B", L"C"};
    put("lines", "a run\n");
    EXPECT_EQ(ZAV_sw_evaluate_multi(context(), signatures, 2), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + "AB" + kTail);
    EXPECT_EQ(takePrinted(), Texts{"a run"});
    EXPECT_EQ(ZAV_sw_evaluate_multi(context(), signatures, 0), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + kTail);
}

TEST_F(SWEvaluateTest, ANullAmongManySignaturesIsAFailedWrite) {
    scannerWrites("<QEL/>");
    ASSERT_EQ(run(), 0);
    const wchar_t* signatures[] = {L"A", nullptr};
    EXPECT_EQ(ZAV_sw_evaluate_multi(context(), signatures, 2), 202);
    EXPECT_EQ(returnCode(), -1);
}

// The lengths cover blocks that are returned to the system and blocks that are reused when they are freed.
TEST_F(SWEvaluateTest, TextsOfTheOldResultsMayBeTheNewSignatures) {
    const std::string value(1'000'000, 'v');
    scannerWrites(
        "<QEL><MatchedSignature guid='guid'><Metadata>text</Metadata><Variable name='name' value='" + value +
            "'/></MatchedSignature></QEL>",
        "<Events><Event/></Events>");
    const auto text = [this](auto getter) {
        const wchar_t* found = nullptr;
        EXPECT_EQ(getter(context(), results().front(), &found), 0);
        return found;
    };
    const auto variable = [](ZAVSwCtx* of, ZAVSwResult* result, const wchar_t** found) {
        return ZAV_sw_get_value(of, result, L"name", found);
    };
    const auto name = [](ZAVSwCtx* of, ZAVSwResult* result, const wchar_t** found) {
        const wchar_t** names = nullptr;
        int count = 0;
        const int code = ZAV_sw_get_variables(of, result, &names, &count);
        *found = names[0];
        return code;
    };
    ASSERT_EQ(run(), 0);
    ASSERT_EQ(ZAV_sw_evaluate(context(), text(ZAV_sw_get_metadata)), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + "<Metadata>text</Metadata>" + kTail);
    ASSERT_EQ(ZAV_sw_evaluate(context(), text(ZAV_sw_get_guid)), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + "guid" + kTail);
    ASSERT_EQ(ZAV_sw_evaluate(context(), text(variable)), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + value + kTail);
    ASSERT_EQ(ZAV_sw_evaluate(context(), text(name)), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + "name" + kTail);
}

TEST_F(SWEvaluateTest, ArraysOfTheOldResultsMayBeTheNewSignatures) {
    scannerWrites("<QEL><MatchedSignature><Variable name='a'/><Variable name='b'/></MatchedSignature></QEL>",
                  "<Events><Event a='1'/><Event a='2'/></Events>");
    ASSERT_EQ(run(), 0);
    const wchar_t** array = nullptr;
    int count = 0;
    ASSERT_EQ(ZAV_sw_get_warnings(context(), &array, &count), 0);
    ASSERT_EQ(ZAV_sw_evaluate_multi(context(), array, static_cast<unsigned int>(count)), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + "<Event a=\"1\"/><Event a=\"2\"/>" + kTail);
    ASSERT_EQ(ZAV_sw_get_variables(context(), results().front(), &array, &count), 0);
    ASSERT_EQ(ZAV_sw_evaluate_multi(context(), array, static_cast<unsigned int>(count)), 0);
    EXPECT_EQ(read("seen_signatures"), kHead + "ab" + kTail);
}

TEST_F(SWEvaluateTest, ATextOfTheOldResultsMayNameTheFileOfSignatures) {
    const std::string path = put("signatures", "those").string();
    scannerWrites("<QEL><MatchedSignature guid='" + path + "'/></QEL>");
    ASSERT_EQ(run(), 0);
    const wchar_t* guid = nullptr;
    ASSERT_EQ(ZAV_sw_get_guid(context(), results().front(), &guid), 0);
    ASSERT_EQ(ZAV_sw_evaluate_file(context(), guid), 0);
    EXPECT_EQ(read("seen_signatures"), "those");
}

TEST_F(SWEvaluateTest, TextsOfTheResultsMayBeOptions) {
    scannerWrites("<QEL><MatchedSignature guid='guid'/></QEL>");
    ASSERT_EQ(run(), 0);
    const wchar_t* guid = nullptr;
    ASSERT_EQ(ZAV_sw_get_guid(context(), results().front(), &guid), 0);
    EXPECT_EQ(ZAV_sw_setopt_variable(context(), guid, guid, guid), 0);
    EXPECT_EQ(ZAV_sw_setopt_config(context(), guid, guid, guid), 0);
    ASSERT_EQ(run(), 0);
    const std::string configuration = read("seen_configuration");
    EXPECT_NE(configuration.find("<Variable name=\"guid\" value=\"guid\" guid=\"guid\" />"),
              std::string::npos);
    EXPECT_NE(configuration.find("<Attribute name=\"guid\" value=\"guid\"/>"), std::string::npos);
}

TEST_F(SWEvaluateTest, ANullAmongManySignaturesIsReportedAsTheReason) {
    scannerWrites("<QEL/>");
    const wchar_t* signatures[] = {L"A", nullptr};
    takeMessages();
    ASSERT_EQ(ZAV_sw_evaluate_multi(context(), signatures, 2), 202);
    const Messages messages = takeMessages();
    EXPECT_EQ(messages.back().level, 0);
    EXPECT_EQ(messages.back().function, "SW_CreateSignatures()");
    EXPECT_TRUE(messages.back().text.ends_with("]: a text of it is null")) << messages.back();
}

TEST_F(SWEvaluateTest, AFileOfSignaturesIsPassedOnUnread) {
    scannerWrites("<QEL/>");
    const std::filesystem::path file = put("mine with blanks.xml", "not even XML");
    EXPECT_EQ(ZAV_sw_evaluate_file(context(), file.wstring().c_str()), 0);
    EXPECT_EQ(read("seen_signatures"), "not even XML");
    EXPECT_EQ(read("mine with blanks.xml"), "not even XML");
    scannerIs("ShowArguments");
    takeMessages();
    EXPECT_EQ(ZAV_sw_evaluate_file(context(), L"/no/such file"), 204);
    EXPECT_EQ(takePrinted().at(8), "/no/such file");
}

TEST_F(SWEvaluateTest, OptionsGoToTheScannerSorted) {
    scannerWrites("<QEL/>");
    EXPECT_EQ(ZAV_sw_setopt_variable(context(), L"b", L"1", L"g"), 0);
    EXPECT_EQ(ZAV_sw_setopt_variable(context(), L"a", L"2", L""), 0);
    EXPECT_EQ(ZAV_sw_setopt_config(context(), L"P", L"x", L"y"), 0);
    ASSERT_EQ(run(), 0);
    EXPECT_NE(read("seen_configuration")
                  .find("\t\t\t<PresetVariables>\n"
                        "\t\t\t\t<Variable name=\"a\" value=\"2\" guid=\"\" />\n"
                        "\t\t\t\t<Variable name=\"b\" value=\"1\" guid=\"g\" />\n"
                        "\t\t\t</PresetVariables>\n"
                        "\t\t\t<Plugins>\n"
                        "\t\t\t\t<Plugin name=\"P\" version=\"1.0\">\n"
                        "\t\t\t\t\t<Attribute name=\"x\" value=\"y\"/>\n"
                        "\t\t\t\t</Plugin>\n"
                        "\t\t\t</Plugins>\n"),
              std::string::npos);
}

TEST_F(SWEvaluateTest, TheStepsAreLoggedInOrder) {
    scannerWrites("<QEL/>");
    put("lines", "hello\n");
    ASSERT_EQ(run(), 0);
    Texts functions;
    for (const zavtest::Message& message : takeMessages()) {
        if (message.function != "TemporaryDir::getTmpFile()") functions.push_back(message.function);
    }
    EXPECT_EQ(functions, (Texts{"SW_CreateConfigFile", "SW_CreateSignatures()", "SW_ExecuteScanner()",
                                "SW_ExecuteScanner()", "SW_ExecuteScanner()", "SW_ExecuteScanner()",
                                "SW_ExecuteScanner()", "SW_parseOutData", "SW_parseWarnData"}));
}

TEST_F(SWEvaluateTest, PointersStayValidUntilTheNextEvaluation) {
    scannerWrites(
        "<QEL><MatchedSignature guid='1'><Variable name='n' value='v'/><Metadata>m</Metadata>"
        "</MatchedSignature></QEL>",
        "<Events><Event>w</Event></Events>");
    ASSERT_EQ(run(), 0);
    ZAVSwResult* const result = results().at(0);
    const wchar_t* guid = nullptr;
    const wchar_t* value = nullptr;
    const wchar_t* text = nullptr;
    const wchar_t** names = nullptr;
    const wchar_t** events = nullptr;
    int count = 0;
    ASSERT_EQ(ZAV_sw_get_guid(context(), result, &guid), 0);
    ASSERT_EQ(ZAV_sw_get_value(context(), result, L"n", &value), 0);
    ASSERT_EQ(ZAV_sw_get_metadata(context(), result, &text), 0);
    ASSERT_EQ(ZAV_sw_get_variables(context(), result, &names, &count), 0);
    ASSERT_EQ(ZAV_sw_get_warnings(context(), &events, &count), 0);
    ASSERT_EQ(ZAV_sw_setopt_config(context(), L"a", L"b", L"c"), 0);
    ASSERT_EQ(ZAV_sw_evaluate(context(), nullptr), 202);
    EXPECT_STREQ(guid, L"1");
    EXPECT_STREQ(value, L"v");
    EXPECT_STREQ(text, L"<Metadata>m</Metadata>");
    EXPECT_STREQ(names[0], L"n");
    EXPECT_STREQ(events[0], L"<Event>w</Event>");
}

}  // namespace
}  // namespace swtest
