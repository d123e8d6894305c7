// Conversion of the scanner's two files to results and warnings.
#include "sw/SWParser.h"

#include <gtest/gtest.h>

#include "intake/XMLParser.h"
#include "kest/Text.h"
#include "tessa/NodeReader.h"
#include "tessa/Utf8.h"
#include "tests/support/ChildlessNode.h"
#include "tests/sw/Evaluation.h"

namespace zav {
namespace {

using swtest::Messages;
using swtest::Variables;
using swtest::WideTexts;
using tessa::Node;
using tessa::NodeList;

const Messages kParsingOutput = {{2, 4, "SW_parseOutData", "Parsing output file"}};
const Messages kParsingWarnings = {{2, 4, "SW_parseWarnData", "Parsing warn data"}};

// The expected content of a result.
struct Expected {
    std::wstring guid;
    std::wstring name;
    std::wstring metadata;
    Variables variables;

    bool operator==(const Expected&) const = default;
};

class SWParserTest : public testing::Test {
  protected:
    SWParserTest() { context_.log = std::make_unique<ZAVlog>(4, zavtest::LogRecorder::callback, &log_); }
    ~SWParserTest() override { SW_deleteResults(&context_); }

    // Returns the root of a document. The tree is valid until the next call.
    const Node* read(const std::string& document) {
        const std::wstring path = kest::widen(directory_.write("file.xml", document).string());
        parser_ = std::make_unique<XMLParser>(nullptr, path.c_str());
        EXPECT_EQ(parser_->status, 0) << document;
        return parser_->getRootNode();
    }

    int parse(const std::string& document) { return SW_parseOutData(&context_, read(document)); }
    int parseSignatures(const std::string& inner) { return parse("<QEL>" + inner + "</QEL>"); }

    // Deletes the tree first, as it no longer exists when hosts read the results.
    std::vector<Expected> results() {
        parser_.reset();
        std::vector<Expected> all;
        for (const auto& result : context_.results) {
            Expected one = {tessa::widened(result->guid), tessa::widened(result->name), result->metadata, {}};
            for (const SWVariable& each : result->variables)
                one.variables.emplace_back(each.name, tessa::widened(each.value));
            all.push_back(one);
        }
        return all;
    }

    Variables variables(const std::string& inner) {
        SW_deleteResults(&context_);
        EXPECT_EQ(parseSignatures("<MatchedSignature>" + inner + "</MatchedSignature>"), 0);
        const std::vector<Expected> all = results();
        return all.size() == 1 ? all.front().variables : Variables();
    }

    std::wstring metadata(const std::string& inner) {
        SW_deleteResults(&context_);
        EXPECT_EQ(parseSignatures("<MatchedSignature>" + inner + "</MatchedSignature>"), 0);
        return results().at(0).metadata;
    }

    WideTexts warnings(const std::string& document) {
        SW_deleteResults(&context_);
        EXPECT_EQ(SW_parseWarnData(&context_, read(document)), 0);
        parser_.reset();
        return context_.warnings;
    }

    ZAVSwCtx context_;
    zavtest::LogRecorder log_;
    zavtest::ScratchDir directory_;
    std::unique_ptr<XMLParser> parser_;
};

TEST_F(SWParserTest, EachMatchedSignatureIsAResultInOrder) {
    EXPECT_EQ(parseSignatures("<MatchedSignature guid='2' name='two' other='x'/>"
                              "<MatchedSignature guid='1' name='one'><Variable name='v' value='w'/>"
                              "<Metadata/></MatchedSignature>"
                              "<MatchedSignature guid='2' name='again'/>"),
              0);
    EXPECT_EQ(log_.messages, kParsingOutput);
    EXPECT_EQ(results(), (std::vector<Expected>{{L"2", L"two", L"", {}},
                                                {L"1", L"one", L"<Metadata/>", {{L"v", L"w"}}},
                                                {L"2", L"again", L"", {}}}));
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(context_.resultsArray.get()[i], context_.results[i].get());
    }
}

TEST_F(SWParserTest, OtherChildrenOfTheRootAreIgnored) {
    EXPECT_EQ(parse("<MatchedSignature>text<matchedsignature guid='1'/><!-- c --><MatchedSignature guid='2'/>"
                    "<Other><MatchedSignature guid='3'/></Other>&amp;<MatchedSignatures/>"
                    "</MatchedSignature>"),
              0);
    EXPECT_EQ(results(), (std::vector<Expected>{{L"2", L"", L"", {}}}));
}

TEST_F(SWParserTest, AttributeNamesOfASignatureAreCaseInsensitive) {
    EXPECT_EQ(parseSignatures("<MatchedSignature GUID='1' Name='a'/><MatchedSignature Guid='2' NAME='b'/>"
                              "<MatchedSignature guid='3' gUiD='4'/><MatchedSignature guids='5' nam='c'/>"),
              0);
    EXPECT_EQ(results(), (std::vector<Expected>{
                             {L"1", L"a", L"", {}}, {L"2", L"b", L"", {}}, {L"4", L"", L"", {}}, {}}));
}

TEST_F(SWParserTest, AnEmptySignatureIsAnEmptyResult) {
    EXPECT_EQ(parseSignatures("<MatchedSignature/>"), 0);
    EXPECT_EQ(results(), std::vector<Expected>{{}});
    EXPECT_EQ(context_.results.front()->variableNames, nullptr);
}

TEST_F(SWParserTest, WithoutSignaturesThereIsNoArray) {
    for (const char* const document : {"<QEL/>", "<QEL></QEL>", "<QEL>text</QEL>", "<QEL><Other/></QEL>"}) {
        log_.messages.clear();
        EXPECT_EQ(parse(document), 0) << document;
        EXPECT_EQ(context_.resultsArray, nullptr);
        EXPECT_EQ(log_.messages, kParsingOutput);
    }
}

TEST_F(SWParserTest, ARootWhoseChildrenCannotBeListedHoldsNothing) {
    const zavtest::ChildlessNode failing(L"MatchedSignature", -1);
    const zavtest::ChildlessNode listless(L"MatchedSignature", 0);
    for (const Node* const root : {static_cast<const Node*>(nullptr), static_cast<const Node*>(&failing),
                                   static_cast<const Node*>(&listless)}) {
        EXPECT_EQ(SW_parseOutData(&context_, root), 0);
        EXPECT_EQ(SW_parseWarnData(&context_, root), 0);
    }
    EXPECT_EQ(context_.results.size(), 0U);
    EXPECT_EQ(context_.warningsArray, nullptr);
}

TEST_F(SWParserTest, ASignatureWithoutANodeOrWithoutChildrenIsAppended) {
    const zavtest::ChildlessNode failing(L"MatchedSignature", -1);
    const zavtest::ChildlessNode listless(L"MatchedSignature", 0);
    EXPECT_EQ(SW_parseMatchedSignature(&context_, nullptr), 0);
    EXPECT_EQ(SW_parseMatchedSignature(&context_, &failing), 0);
    EXPECT_EQ(SW_parseMatchedSignature(&context_, &listless), 0);
    EXPECT_EQ(results(), (std::vector<Expected>{{}, {}, {}}));
    EXPECT_TRUE(log_.messages.empty());
}

TEST_F(SWParserTest, VariablesAreSortedAndALaterOneReplacesAnEarlierOne) {
    EXPECT_EQ(variables("<Variable name='b' value='1'/><Variable name='a' value='2'/>"
                        "<Variable name='b' value='3'/>"),
              (Variables{{L"a", L"2"}, {L"b", L"3"}}));
    const wchar_t** const names = context_.results.front()->variableNames.get();
    EXPECT_STREQ(names[0], L"a");
    EXPECT_STREQ(names[1], L"b");
}

TEST_F(SWParserTest, VariablesWithoutANameAreDropped) {
    EXPECT_EQ(variables("<Variable value='x'/><Variable name='' value='x'/><Variable/>"
                        "<Variable Name='a' value='x'/><Variable NAME='a'/>"),
              Variables());
    EXPECT_EQ(context_.results.front()->variableNames, nullptr);
}

TEST_F(SWParserTest, AVariableWithoutAValueHasAnEmptyOne) {
    EXPECT_EQ(variables("<Variable name='a'/><Variable Value='x' name='b' other='y'/>"
                        "<Variable value='z' name='c'/>"),
              (Variables{{L"a", L""}, {L"b", L""}, {L"c", L"z"}}));
    EXPECT_EQ(variables("<Variable name='a' value='x'/><Variable name='a'/>"), (Variables{{L"a", L""}}));
}

TEST_F(SWParserTest, OnlyDirectChildrenNamedVariableCount) {
    EXPECT_EQ(variables("text<variable name='a' value='1'/><Other><Variable name='b' value='2'/></Other>"
                        "<Variable name='c' value='3'><Variable name='d' value='4'/></Variable>"),
              (Variables{{L"c", L"3"}}));
}

TEST_F(SWParserTest, NamesAndValuesHoldAnyCharacter) {
    EXPECT_EQ(variables("<Variable name='\xC3\xA4' value='&lt;&#8364;\xF0\x9F\x98\x80'/>"),
              (Variables{{L"\u00E4", L"<\u20AC\U0001F600"}}));
}

TEST_F(SWParserTest, TheVariablesOfSignaturesAreSeparate) {
    EXPECT_EQ(parseSignatures("<MatchedSignature><Variable name='a' value='1'/></MatchedSignature>"
                              "<MatchedSignature><Other/></MatchedSignature><MatchedSignature/>"
                              "<MatchedSignature><Variable name='b' value='2'/></MatchedSignature>"),
              0);
    EXPECT_EQ(results(), (std::vector<Expected>{
                             {L"", L"", L"", {{L"a", L"1"}}}, {}, {}, {L"", L"", L"", {{L"b", L"2"}}}}));
}

TEST_F(SWParserTest, MetadataIsIndentedXmlWithItsOwnTags) {
    EXPECT_EQ(metadata("<Metadata a='1'><B>x</B><C><D/></C></Metadata>"),
              L"<Metadata a=\"1\">\n  <B>x</B>\n  <C>\n    <D/>\n  </C>\n</Metadata>");
    EXPECT_EQ(metadata("<Metadata>a &amp; b</Metadata>"), L"<Metadata>a &amp; b</Metadata>");
    EXPECT_EQ(metadata("<Metadata/>"), L"<Metadata/>");
    EXPECT_EQ(metadata("<metadata/><Other><Metadata/></Other>"), L"");
}

TEST_F(SWParserTest, TheLastMetadataElementIsUsed) {
    EXPECT_EQ(metadata("<Metadata>1</Metadata><Variable/><Metadata>2</Metadata>"), L"<Metadata>2</Metadata>");
}

TEST_F(SWParserTest, BytesOfMetadataAreWidenedAsSignedOnes) {
    EXPECT_EQ(metadata("<Metadata>A\xC3\xA4</Metadata>"), std::wstring(L"<Metadata>A") +
                                                              static_cast<wchar_t>(-61) +
                                                              static_cast<wchar_t>(-92) + L"</Metadata>");
}

TEST_F(SWParserTest, LongMetadataIsComplete) {
    const std::string text = std::string(100'000, 'x') + "&lt;" + std::string(100'000, 'y');
    EXPECT_EQ(metadata("<Metadata>" + text + "</Metadata>"),
              kest::widen("<Metadata>" + text + "</Metadata>"));
}

TEST_F(SWParserTest, EachEventIsAWarningOfOneLine) {
    EXPECT_EQ(
        warnings("<Events>text<Event code='1'><Text>a</Text>\n<Text>b</Text></Event><Other><Event/></Other>"
                 "<event/><Event>\xC3\xA4</Event></Events>"),
        (WideTexts{
            L"<Event code=\"1\"><Text>a</Text><Text>b</Text></Event>",
            std::wstring(L"<Event>") + static_cast<wchar_t>(-61) + static_cast<wchar_t>(-92) + L"</Event>"}));
    for (std::size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(context_.warningsArray.get()[i], context_.warnings[i].c_str());
    }
    EXPECT_EQ(log_.messages, kParsingWarnings);
}

TEST_F(SWParserTest, WithoutEventsThereIsNoArray) {
    for (const char* const document : {"<Events/>", "<Events>text</Events>", "<Event><Other/></Event>"}) {
        EXPECT_EQ(warnings(document), WideTexts()) << document;
        EXPECT_EQ(context_.warningsArray, nullptr);
    }
}

TEST_F(SWParserTest, ResultsOfSeveralDocumentsAddUp) {
    EXPECT_EQ(parseSignatures("<MatchedSignature guid='1'><Metadata>a</Metadata></MatchedSignature>"), 0);
    EXPECT_EQ(parseSignatures("<MatchedSignature guid='1'><Metadata>b</Metadata></MatchedSignature>"), 0);
    EXPECT_EQ(results(), (std::vector<Expected>{{L"1", L"", L"<Metadata>a</Metadata>", {}},
                                                {L"1", L"", L"<Metadata>b</Metadata>", {}}}));
    EXPECT_EQ(context_.resultsArray.get()[1], context_.results[1].get());
    EXPECT_EQ(context_.guidResults.first(L"1"), context_.results[0].get());
}

TEST_F(SWParserTest, ALaterWarningsDocumentAddsToTheEarlier) {
    warnings("<Events><Event>1</Event></Events>");
    EXPECT_EQ(SW_parseWarnData(&context_, read("<Events><Event>2</Event></Events>")), 0);
    EXPECT_EQ(context_.warnings, (WideTexts{L"<Event>1</Event>", L"<Event>2</Event>"}));
    EXPECT_STREQ(context_.warningsArray.get()[0], L"<Event>1</Event>");
    EXPECT_STREQ(context_.warningsArray.get()[1], L"<Event>2</Event>");
}

TEST_F(SWParserTest, NoFunctionNeedsALogger) {
    context_.log.reset();
    EXPECT_EQ(parseSignatures("<MatchedSignature/>"), 0);
    EXPECT_EQ(SW_parseWarnData(&context_, read("<Events><Event/></Events>")), 0);
    EXPECT_EQ(SW_ParseOutput(&context_, L"/none", L"/none"), 204);
}

TEST(SWParser, ANullContextIsRefused) {
    EXPECT_EQ(SW_ParseOutput(nullptr, L"", L""), 3);
    EXPECT_EQ(SW_parseOutData(nullptr, nullptr), 3);
    EXPECT_EQ(SW_parseMatchedSignature(nullptr, nullptr), 3);
    EXPECT_EQ(SW_parseWarnData(nullptr, nullptr), 3);
}

class SWParseOutputTest : public SWParserTest {
  protected:
    std::wstring write(const std::string& name, const std::string& content) {
        return directory_.write(name, content).wstring();
    }

    const std::wstring output_ = write("output", "<QEL><MatchedSignature guid='1'/></QEL>");
    const std::wstring warnings_ = write("warnings", "<Events><Event/></Events>");
    const std::wstring broken_ = write("broken", "<QEL>");
};

TEST_F(SWParseOutputTest, ReadsBothFiles) {
    EXPECT_EQ(SW_ParseOutput(&context_, output_, warnings_), 0);
    EXPECT_EQ(results().size(), 1U);
    EXPECT_EQ(context_.warnings, WideTexts{L"<Event/>"});
    EXPECT_EQ(log_.messages, (Messages{kParsingOutput[0], kParsingWarnings[0]}));
}

TEST_F(SWParseOutputTest, StoresNothingOfABrokenOutput) {
    for (const std::wstring& output : {broken_, std::wstring(L"/none")}) {
        EXPECT_EQ(SW_ParseOutput(&context_, output, warnings_), 204);
        EXPECT_TRUE(context_.results.empty());
        EXPECT_TRUE(context_.warnings.empty());
        EXPECT_EQ(context_.warningsArray, nullptr);
    }
}

TEST_F(SWParseOutputTest, KeepsTheResultsBesideBrokenWarnings) {
    for (const std::wstring& warnings : {broken_, std::wstring(L"/none")}) {
        SW_deleteResults(&context_);
        EXPECT_EQ(SW_ParseOutput(&context_, output_, warnings), 205);
        EXPECT_EQ(results().size(), 1U);
        EXPECT_NE(context_.resultsArray, nullptr);
        EXPECT_TRUE(context_.warnings.empty());
    }
}

// Errors in the warnings file are logged even if the output file determines the code.
TEST_F(SWParseOutputTest, ReadsBothFilesBeforeItJudgesEither) {
    EXPECT_EQ(SW_ParseOutput(&context_, L"/none/output", L"/none/warnings"), 204);
    const auto missing = [](const std::string& path) {
        return zavtest::Message{
            0, 4, "XML_parser",
            "Error in line 0: " + path + ": cannot be opened: ENOENT (no such file or directory)"};
    };
    EXPECT_EQ(log_.messages, (Messages{missing("/none/output"), missing("/none/warnings")}));
    log_.messages.clear();
    EXPECT_EQ(SW_ParseOutput(&context_, output_, L"/none/warnings"), 205);
    EXPECT_EQ(log_.messages, (Messages{missing("/none/warnings"), kParsingOutput[0]}));
}

TEST_F(SWParserTest, BlocksOfAnySizeGiveTheSameResultsAndWarnings) {
    const std::string document =
        "<?xml version='1.0'?>\n<Q>\n <MatchedSignature guid='a&amp;b' name='Gr\xc3\xb6\xc3\x9f'>\n"
        "  <Metadata><P x='1'>t\xe2\x82\xac<![CDATA[<&]]></P></Metadata>\n"
        "  <Variable name='b' value='1&#10;2'/><Variable name='a' value='\xf0\x9f\x98\x80'/>\n"
        " </MatchedSignature>\n <Event code='c'>te&lt;xt</Event>\n</Q>";
    const std::wstring path = kest::widen(directory_.write("blocks.xml", document).string());
    const std::vector<Expected> wanted = {
        {L"a&b",
         L"Gr\u00f6\u00df",
         metadata("<Metadata><P x='1'>t\xe2\x82\xac<![CDATA[<&]]></P></Metadata>"),
         {{L"a", L"\U0001f600"}, {L"b", L"1\n2"}}}};
    for (const int size : {1, 2, 3, 7, 4096}) {
        SW_deleteResults(&context_);
        XMLNodeSink sink(nullptr);
        tessa::NodeReader reader(sink);
        reader.blockSize = size;
        ASSERT_EQ(reader.process(kest::String(path), 0), 0) << size;
        ASSERT_EQ(SW_parseOutData(&context_, sink.root()), 0);
        ASSERT_EQ(SW_parseWarnData(&context_, sink.root()), 0);
        EXPECT_EQ(results(), wanted) << size;
        EXPECT_EQ(context_.warnings, (WideTexts{L"<Event code=\"c\">te&lt;xt</Event>"})) << size;
    }
}

}  // namespace
}  // namespace zav
