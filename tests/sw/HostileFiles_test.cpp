// Output and warnings files that a scanner should never write.
#include <algorithm>

#include "tests/support/HostileXml.h"
#include "tests/sw/Evaluation.h"

namespace swtest {
namespace {

using zavtest::repeated;

using HostileFilesTest = EvaluationTest;

const std::string kGoodOutput =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<QEL a=\"1\">\n"
    "  <MatchedSignature guid='1' name='n'><Variable name='b' value='2'/><Variable name='a'/>\n"
    "    <Metadata x='y'><T>\xE2\x82\xAC &amp; <![CDATA[<x>]]></T></Metadata></MatchedSignature>\n"
    "  <!-- \xC3\xA4 -->\n"
    "  <MatchedSignature guid='2'/>\n"
    "</QEL>";
const std::string kGoodWarnings =
    "<?xml version=\"1.0\"?>\n<Events><Event code='1'><Text>\xC3\xA4</Text></Event><!-- c --></Events>";

bool toldOfAnError(const Messages& messages) {
    return std::any_of(messages.begin(), messages.end(), [](const zavtest::Message& message) {
        return message.level == 0 && message.function == "XML_parser" &&
               message.text.starts_with("Error in line ");
    });
}

TEST_F(HostileFilesTest, EveryBeginningOfAGoodOutputIsRefused) {
    scannerWrites(kGoodOutput, kGoodWarnings);
    ASSERT_EQ(run(), 0);
    for (std::size_t length = 0; length < kGoodOutput.size(); ++length) {
        put("output.xml", kGoodOutput.substr(0, length));
        takeMessages();
        EXPECT_EQ(run(), 204) << length;
        EXPECT_TRUE(toldOfAnError(takeMessages())) << length;
        EXPECT_EQ(returnCode(), 0) << length;
        EXPECT_EQ(results().size(), 0U) << length;
        EXPECT_EQ(warnings().size(), 0U) << length;
    }
}

TEST_F(HostileFilesTest, EveryBeginningOfGoodWarningsIsRefusedAndTheResultsAreKept) {
    for (std::size_t length = 0; length < kGoodWarnings.size(); ++length) {
        scannerWrites(kGoodOutput, kGoodWarnings.substr(0, length));
        takeMessages();
        EXPECT_EQ(run(), 205) << length;
        EXPECT_TRUE(toldOfAnError(takeMessages())) << length;
        EXPECT_EQ(guids(), (WideTexts{L"1", L"2"})) << length;
        EXPECT_EQ(warnings().size(), 0U) << length;
    }
}

TEST_F(HostileFilesTest, EveryByteRemovedFromAGoodOutputKeepsTheContextConsistent) {
    for (std::size_t lost = 0; lost < kGoodOutput.size(); ++lost) {
        scannerWrites(kGoodOutput.substr(0, lost) + kGoodOutput.substr(lost + 1), kGoodWarnings);
        const int code = run();
        EXPECT_TRUE(code == 0 || code == 204) << lost;
        EXPECT_EQ(returnCode(), 0);
        for (ZAVSwResult* const result : results()) {
            variables(result);
            metadata(result);
        }
        for (const std::wstring& guid : guids()) EXPECT_NE(find(guid.c_str()), nullptr) << lost;
    }
}

TEST_F(HostileFilesTest, OtherEncodingsAreRead) {
    scannerWrites(
        "<?xml version='1.0' encoding='ISO-8859-1'?><QEL><MatchedSignature guid='\xE4'><Metadata>\xE4"
        "</Metadata></MatchedSignature></QEL>",
        "<?xml version='1.0' encoding='ISO-8859-2'?><Events><Event>\xB1</Event></Events>");
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(guids(), WideTexts{L"\u00E4"});
    EXPECT_EQ(metadata(results().at(0)), std::wstring(L"<Metadata>") + static_cast<wchar_t>(-61) +
                                             static_cast<wchar_t>(-92) + L"</Metadata>");
    EXPECT_EQ(warnings(), WideTexts{std::wstring(L"<Event>") + static_cast<wchar_t>(-60) +
                                    static_cast<wchar_t>(-123) + L"</Event>"});
}

struct HostileCase {
    const char* name;
    std::string document;
};

class HostileDocumentTest : public HostileFilesTest, public testing::WithParamInterface<HostileCase> {};

// Uses the document as output and as warnings. The evaluation after it must succeed.
TEST_P(HostileDocumentTest, IsRefusedWithAMessage) {
    scannerWrites(GetParam().document, kGoodWarnings);
    EXPECT_EQ(run(), 204);
    EXPECT_TRUE(toldOfAnError(takeMessages()));
    EXPECT_EQ(results().size(), 0U);
    scannerWrites(kGoodOutput, GetParam().document);
    EXPECT_EQ(run(), 205);
    EXPECT_TRUE(toldOfAnError(takeMessages()));
    EXPECT_EQ(results().size(), 2U);
    scannerWrites(kGoodOutput, kGoodWarnings);
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(results().size(), 2U);
    EXPECT_EQ(warnings().size(), 1U);
}

INSTANTIATE_TEST_SUITE_P(
    Documents, HostileDocumentTest,
    testing::Values(HostileCase{"Empty", ""}, HostileCase{"NoXml", "scan failed\n"},
                    HostileCase{"TwoRoots", "<QEL/>\n<QEL/>"},
                    HostileCase{"WrongEndTag", "<QEL><Event></Events></QEL>"},
                    HostileCase{"InvalidUtf8", "<QEL><Event>\xFF</Event></QEL>"},
                    HostileCase{"ANul", std::string("<QEL>\0</QEL>", 12)},
                    HostileCase{"UnknownEncoding", "<?xml version=\"1.0\" encoding=\"x-none\"?><QEL/>"},
                    HostileCase{"UnknownEntity", "<QEL><Event>&none;</Event></QEL>"},
                    HostileCase{"DuplicateAttribute", "<QEL><MatchedSignature guid='1' guid='2'/></QEL>"},
                    HostileCase{"EntitiesThatAmplify",
                                zavtest::amplifyingDoctype() + "<QEL><Event>&e11;</Event></QEL>"},
                    HostileCase{"DeepWithoutAnEnd", repeated("<a>", 200'000)},
                    HostileCase{"AnEndlessTag", "<QEL " + std::string(8'000'000, 'x')}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(HostileFilesTest, MetadataAndEventsOfAnyDepthAreWritten) {
    constexpr std::size_t kDeep = 50'000;
    const std::string before = repeated("<a>", kDeep);
    const std::string behind = repeated("</a>", kDeep);
    scannerWrites("<QEL><MatchedSignature><Metadata>" + before + "<b/>" + behind +
                      "</Metadata></MatchedSignature></QEL>",
                  "<Events><Event>" + before + "<b/>" + behind + "</Event></Events>");
    ASSERT_EQ(run(), 0);
    const std::string event = "<Event>" + before + "<b/>" + behind + "</Event>";
    EXPECT_EQ(warnings(), WideTexts{std::wstring(event.begin(), event.end())});
    // One line for each start tag, each end tag and the innermost element.
    const std::wstring metadata = this->metadata(results().at(0));
    EXPECT_EQ(static_cast<std::size_t>(std::count(metadata.begin(), metadata.end(), L'\n')), 2 * kDeep + 2);
}

TEST_F(HostileFilesTest, ManyVariablesInTheWorstOrderAreSorted) {
    constexpr int kMany = 50'000;
    std::string variables;
    for (int i = kMany; i > 0; --i) variables += "<Variable name='" + std::to_string(1'000'000 + i) + "'/>";
    scannerWrites("<QEL><MatchedSignature>" + variables + variables + "</MatchedSignature></QEL>");
    ASSERT_EQ(run(), 0);
    const wchar_t** names = nullptr;
    int count = 0;
    ASSERT_EQ(ZAV_sw_get_variables(context(), results().at(0), &names, &count), 0);
    ASSERT_EQ(count, kMany);
    EXPECT_STREQ(names[0], L"1000001");
    EXPECT_STREQ(names[kMany - 1], L"1050000");
}

TEST_F(HostileFilesTest, ManyResultsOfOneIdentifierAreFoundAtOnce) {
    constexpr std::size_t kMany = 50'000;
    scannerWrites("<QEL>" + repeated("<MatchedSignature guid='g'/>", kMany) + "</QEL>");
    ASSERT_EQ(run(), 0);
    ZAVSwResult** found = nullptr;
    unsigned int count = 0;
    ASSERT_EQ(ZAV_sw_find_results_by_guid(context(), L"g", &found, &count), 0);
    EXPECT_EQ(count, kMany);
    EXPECT_TRUE(std::equal(found, found + count, results().begin()));
}

// External entities are never loaded, neither from files nor from the network.
TEST_F(HostileFilesTest, ExternalEntitiesAreNeverLoaded) {
    const std::string secret = put("secret", "the secret");
    const std::string doctype = "<!DOCTYPE QEL [<!ENTITY x SYSTEM \"file://" + secret + "\">]>";
    scannerWrites(doctype + "<QEL><MatchedSignature><Metadata>[&x;]</Metadata></MatchedSignature></QEL>",
                  doctype + "<QEL><Event>[&x;]</Event></QEL>");
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(metadata(results().at(0)), L"<Metadata>[]</Metadata>");
    EXPECT_EQ(warnings(), WideTexts{L"<Event>[]</Event>"});
    const Messages messages = takeMessages();
    EXPECT_EQ(
        std::count_if(messages.begin(), messages.end(),
                      [](const zavtest::Message& message) {
                          return message.level == 2 && message.text.starts_with("Warning in line 1: ") &&
                                 message.text.find(": document type declaration: ") != std::string::npos;
                      }),
        2);
}

TEST_F(HostileFilesTest, DirectoriesInPlaceOfTheFilesAreRefused) {
    scannerIs("LinkToDirectory");
    EXPECT_EQ(run(), 204);
    const Messages messages = takeMessages();
    ASSERT_GE(messages.size(), 2U);
    for (auto message = messages.end() - 2; message != messages.end(); ++message) {
        EXPECT_EQ(message->level, 0);
        EXPECT_TRUE(message->text.ends_with(": a regular file is expected, but this is a directory"))
            << *message;
    }
}

}  // namespace
}  // namespace swtest
