#include "intake/XMLParser.h"

#include <gtest/gtest.h>

#include <clocale>
#include <filesystem>
#include <type_traits>

#include "kest/Text.h"
#include "tests/support/Allocations.h"
#include "tests/support/Descriptors.h"
#include "tests/support/LogRecorder.h"
#include "tests/tessa/Reading.h"

namespace zav::test {
namespace {

using tessa::test::shown;
using zavtest::LogRecorder;
using zavtest::Message;

static_assert(!std::is_polymorphic_v<XMLParser>);

class XMLParserTest : public testing::Test {
  protected:
    std::wstring write(const std::string& xml) const {
        return kest::widen(directory_.write("out.xml", xml).string());
    }

    // The logged form of a message about the file that was written last.
    std::string named(const std::string& place, const std::string& message) const {
        return place + ": " + (directory_.path() / "out.xml").string() + ": " + message;
    }

    zavtest::ScratchDir directory_;
    LogRecorder recorder_;
    ZAVlog log_{3, LogRecorder::callback, &recorder_};
};

TEST_F(XMLParserTest, WellFormedFileGivesItsTree) {
    const XMLParser parser(&log_, write("<QEL>\n  <Field name='x'>value</Field>\n</QEL>\n").c_str());
    EXPECT_EQ(parser.status, 0);
    EXPECT_EQ(shown(parser.getRootNode()), L"QEL(Field[name='x'](\"value\"))");
    EXPECT_TRUE(recorder_.messages.empty());
}

TEST_F(XMLParserTest, OptionalProcessingOfTheReaderIsOff) {
    const XMLParser parser(&log_, write("<!DOCTYPE a><a xmlns='urn:x'>\n <b/>\n</a>").c_str());
    EXPECT_EQ(parser.status, 0);
    EXPECT_EQ(shown(parser.getRootNode()), L"a[xmlns='urn:x'](b)");
}

TEST_F(XMLParserTest, WarningIsLoggedAndChangesNothingElse) {
    const XMLParser parser(&log_, write("<?xml version='1.0'?>\n<!DOCTYPE a>\n<a/>").c_str());
    EXPECT_EQ(parser.status, 0);
    EXPECT_EQ(recorder_.messages,
              (std::vector<Message>{
                  {2, 3, "XML_parser",
                   named("Warning in line 2", "document type declaration: nothing external is loaded")}}));
}

TEST_F(XMLParserTest, FileThatIsNotXmlIsReportedWithItsLine) {
    const struct {
        const char* xml;
        const char* place;
        const char* message;
    } cases[] = {
        {"", "Error in line 1", "no element found"},
        {"<a>\n<b>\n</a>", "Error in line 3", "mismatched tag, the end of \"b\" is expected"},
        {"<a/>\n<b/>", "Error in line 2", "junk after document element"},
        {"<?xml version='1.0' encoding='nonsense'?><a/>", "Error in line 1", "unknown encoding \"nonsense\""},
    };
    for (const auto& each : cases) {
        recorder_.messages.clear();
        const XMLParser parser(&log_, write(each.xml).c_str());
        EXPECT_GE(parser.status, 1) << each.xml;
        EXPECT_EQ(parser.getRootNode(), nullptr);
        EXPECT_EQ(recorder_.messages,
                  (std::vector<Message>{{0, 3, "XML_parser", named(each.place, each.message)}}));
    }
}

TEST_F(XMLParserTest, MissingFileIsReportedWithLineZero) {
    const std::wstring missing = kest::widen((directory_.path() / "missing").string());
    const XMLParser parser(&log_, missing.c_str());
    EXPECT_GE(parser.status, 1);
    EXPECT_EQ(parser.getRootNode(), nullptr);
    EXPECT_EQ(recorder_.messages,
              (std::vector<Message>{{0, 3, "XML_parser",
                                     "Error in line 0: " + (directory_.path() / "missing").string() +
                                         ": cannot be opened: ENOENT (no such file or directory)"}}));
}

// The logger drops messages that the locale cannot convert, and the "C" locale converts only ASCII.
TEST_F(XMLParserTest, MessagesReachTheLogForAnyNames) {
    ASSERT_STREQ(setlocale(LC_CTYPE, nullptr), "C");
    const std::wstring directory = kest::widen(directory_.path().string());
    const auto path = [&](const char* name, const char* xml) {
        directory_.write(name, xml);
        return directory + L"/" + kest::widen(name);
    };
    const std::wstring paths[] = {path("caf\xC3\xA9.xml", "<\xC3\xA4></b>"),
                                  path("\xE9\\.xml", "<!DOCTYPE a SYSTEM 'x'><a>&\xC3\xA4;</a>"),
                                  directory + L"/\x20AC\xC4"};
    for (const std::wstring& each : paths) XMLParser(&log_, each.c_str());
    const std::string name = directory_.path().string() + "/";
    EXPECT_EQ(
        recorder_.textsOf("XML_parser"),
        (std::vector<std::string>{
            "Error in line 1: " + name +
                "caf\\xC3\\xA9.xml: mismatched tag, the end of \"\\xC3\\xA4\" is expected",
            "Warning in line 1: " + name +
                "\\xE9\\\\.xml: document type declaration: nothing external is loaded, so \"x\" is left out",
            "Warning in line 1: " + name +
                "\\xE9\\\\.xml: entity \"\\xC3\\xA4\" is left out: it is not declared in the document itself",
            "Error in line 0: " + name +
                "\\xAC\\xC4: cannot be opened: ENOENT (no such file or directory)"}));
}

TEST_F(XMLParserTest, LineOfANodeIsFoundSilently) {
    const std::wstring path = write("<!DOCTYPE a><a>\n  <b>\n    <c/>text</b>\n</a>");
    const XMLParser parser(&log_, path.c_str());
    recorder_.messages.clear();
    EXPECT_EQ(parser.lineOf({}), 1);
    EXPECT_EQ(parser.lineOf({0}), 2);
    EXPECT_EQ(parser.lineOf({0, 1}), 3);
    EXPECT_EQ(parser.lineOf({1}), 0);
    std::filesystem::remove(kest::narrow(path));
    EXPECT_EQ(parser.lineOf({0}), 0);
    EXPECT_TRUE(recorder_.messages.empty());
}

TEST_F(XMLParserTest, NullPathIsLikeAMissingFile) {
    EXPECT_GE(XMLParser(&log_, nullptr).status, 1);
    EXPECT_EQ(recorder_.messages.size(), 1U);
}

TEST_F(XMLParserTest, FileIsReadWithoutALog) {
    EXPECT_EQ(shown(XMLParser(nullptr, write("<!DOCTYPE a><a/>").c_str()).getRootNode()), L"a");
    EXPECT_GE(XMLParser(nullptr, write("<a>").c_str()).status, 1);
    EXPECT_GE(XMLParser(nullptr, L"/missing/altogether").status, 1);
}

TEST_F(XMLParserTest, NothingIsLeftOfAParser) {
    const std::wstring good = write("<a>text<b x='1'/></a>");
    const std::wstring bad = kest::widen(directory_.write("bad.xml", "<a>text<b x='1'/>").string());
    const long blocks = zavtest::liveBlocks();
    const std::size_t descriptors = zavtest::openDescriptors();
    EXPECT_EQ(XMLParser(nullptr, good.c_str()).status, 0);
    EXPECT_EQ(XMLParser(nullptr, bad.c_str()).status, 1);
    EXPECT_EQ(zavtest::liveBlocks(), blocks);
    EXPECT_EQ(zavtest::openDescriptors(), descriptors);
}

}  // namespace
}  // namespace zav::test
