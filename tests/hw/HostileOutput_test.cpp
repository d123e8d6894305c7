// Output files that a scanner should never write.
#include <algorithm>

#include "tests/hw/Inventory.h"
#include "tests/support/HostileXml.h"

namespace hwtest {
namespace {

using zavtest::repeated;

using HostileOutputTest = InventoryTest;

const std::string goodOutput =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<QEL a=\"1\">\n"
    "  <Memory><Size unit='MB'>64</Size><Type/></Memory>\n"
    "  <!-- \xC3\xA4 -->\n"
    "  <Modem><Name>\xE2\x82\xAC &amp; <![CDATA[<x>]]></Name></Modem>\n"
    "</QEL>";

TEST_F(HostileOutputTest, EveryBeginningOfAGoodOutputIsRefused) {
    scannerWrites(goodOutput);
    ASSERT_EQ(run(), 0);
    for (std::size_t length = 0; length < goodOutput.size(); ++length) {
        put("output.xml", goodOutput.substr(0, length));
        takeMessages();
        EXPECT_EQ(run(), 104) << length;
        EXPECT_EQ(returnCode(), 0) << length;
        EXPECT_EQ(instances(3), 0) << length;
        const Messages messages = takeMessages();
        const bool told = std::any_of(messages.begin(), messages.end(), [](const zavtest::Message& message) {
            return message.level == 0 && message.function == "XML_parser" &&
                   message.text.find("Error in line ") == 0;
        });
        EXPECT_TRUE(told) << length;
    }
}

TEST_F(HostileOutputTest, EveryByteRemovedFromAGoodOutputKeepsTheContextConsistent) {
    for (std::size_t lost = 0; lost < goodOutput.size(); ++lost) {
        scannerWrites(goodOutput.substr(0, lost) + goodOutput.substr(lost + 1));
        const int code = run();
        EXPECT_TRUE(code == 0 || code == 104) << lost;
        EXPECT_EQ(returnCode(), 0);
        for (int group = 1; group <= 51; ++group) {
            const int count = instances(group);
            for (int instance = 0; instance < count; ++instance) {
                for (const std::wstring& field : fields(group, instance))
                    value(group, instance, field.c_str());
            }
        }
    }
}

std::string utf16(const std::u16string& text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : u"\uFEFF" + text) {
        const char high = static_cast<char>(unit >> 8);
        const char low = static_cast<char>(unit & 0xFF);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

TEST_F(HostileOutputTest, Utf16IsReadInBothOrdersOfBytes) {
    const std::u16string text =
        u"<?xml version=\"1.0\" encoding=\"UTF-16\"?><QEL><Memory><Type>\u20AC "
        u"\U0001F600</Type></Memory></QEL>";
    for (const bool bigEndian : {false, true}) {
        scannerWrites(utf16(text, bigEndian));
        ASSERT_EQ(run(), 0) << bigEndian;
        EXPECT_EQ(value(3, 0, L"Type"), L"\u20AC \U0001F600");
    }
}

TEST_F(HostileOutputTest, Latin1IsRead) {
    scannerWrites(
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?><QEL><Memory><Type>\xE4</Type></Memory></QEL>");
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(value(3, 0, L"Type"), L"\u00E4");
}

struct HostileCase {
    const char* name;
    std::string output;
    std::string message;  // the beginning of the last message
};

class HostileDocumentTest : public HostileOutputTest, public testing::WithParamInterface<HostileCase> {};

TEST_P(HostileDocumentTest, IsRefusedWithAMessage) {
    scannerWrites(GetParam().output);
    EXPECT_EQ(run(), 104);
    const zavtest::Message last = takeMessages().back();
    EXPECT_EQ(last.level, 0);
    EXPECT_EQ(last.text.substr(0, GetParam().message.size()), GetParam().message);
    scannerWrites("<QEL><Memory/></QEL>");
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(instances(3), 1);
}

constexpr std::size_t deep = 200'000;

INSTANTIATE_TEST_SUITE_P(
    Documents, HostileDocumentTest,
    testing::Values(
        HostileCase{"Empty", "", "Error in line 1: "},
        HostileCase{"OnlyBlanks", "  \n \n", "Error in line 3: "},
        HostileCase{"NoXml", "scan failed\n", "Error in line 1: "},
        HostileCase{"TwoRoots", "<QEL/>\n<QEL/>", "Error in line 2: "},
        HostileCase{"WrongEndTag", "<QEL><Memory></Modem></QEL>", "Error in line 1: "},
        HostileCase{"InvalidUtf8", "<QEL><Memory><A>\xFF</A></Memory></QEL>", "Error in line 1: "},
        HostileCase{"ANul", std::string("<QEL>\0</QEL>", 12), "Error in line 1: "},
        HostileCase{"UnknownEncoding", "<?xml version=\"1.0\" encoding=\"x-none\"?><QEL/>",
                    "Error in line 1: "},
        HostileCase{"UnknownEntity", "<QEL><Memory><A>&none;</A></Memory></QEL>", "Error in line 1: "},
        HostileCase{"DuplicateAttribute", "<QEL a='1' a='2'/>", "Error in line 1: "},
        HostileCase{"EntitiesThatAmplify",
                    zavtest::amplifyingDoctype() + "<QEL><Memory><Size>&e11;</Size></Memory></QEL>",
                    "Error in line 1: "},
        HostileCase{"DeepInAField",
                    "<QEL><Memory>" + repeated("<a>", deep) + repeated("</a>", deep) + "</Memory></QEL>",
                    "Error: unrecognized format of value in field [a]"},
        HostileCase{"DeepWithoutAnEnd", repeated("<a>", deep), "Error in line 1: "},
        HostileCase{"AnEndlessTag", "<QEL " + std::string(8'000'000, 'x'), "Error in line "}),
    [](const auto& test) { return std::string(test.param.name); });

TEST_F(HostileOutputTest, ManySmallInstancesAreNoProblem) {
    scannerWrites("<QEL>" + repeated("<Memory><A>1</A></Memory>", 20'000) + "</QEL>");
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(instances(3), 20'000);
    EXPECT_EQ(value(3, 19'999, L"A"), L"1");
}

TEST_F(HostileOutputTest, OneLongValueIsNoProblem) {
    scannerWrites("<QEL><Memory><A>" + std::string(3'000'000, 'x') + "</A></Memory></QEL>");
    ASSERT_EQ(run(), 0);
    EXPECT_EQ(value(3, 0, L"A").size(), 3'000'000U);
}

// External entities are never loaded, neither from files nor from the network.
TEST_F(HostileOutputTest, ExternalEntitiesAreNeverLoaded) {
    const std::string secret = put("secret", "the secret");
    scannerWrites("<!DOCTYPE QEL [<!ENTITY x SYSTEM \"file://" + secret +
                  "\">]><QEL><Memory><A>[&x;]</A></Memory></QEL>");
    EXPECT_EQ(run(), 0);
    EXPECT_EQ(value(3, 0, L"A"), L"[]");
}

TEST_F(HostileOutputTest, AnExternalDoctypeIsAWarningOnly) {
    scannerWrites("<!DOCTYPE QEL SYSTEM \"file:///none.dtd\"><QEL><Memory/></QEL>");
    EXPECT_EQ(run(), 0);
    const Messages messages = takeMessages();
    EXPECT_EQ(std::count_if(messages.begin(), messages.end(),
                            [](const zavtest::Message& message) {
                                return message.level == 2 &&
                                       message.text.starts_with("Warning in line 1: ") &&
                                       message.text.ends_with(
                                           ": document type declaration: nothing external "
                                           "is loaded, so \"file:///none.dtd\" is left out");
                            }),
              1);
    EXPECT_EQ(instances(3), 1);
}

TEST_F(HostileOutputTest, ADirectoryInPlaceOfTheOutputIsRefused) {
    scannerIs("LinkToDirectory");
    EXPECT_EQ(run(), 104);
    const zavtest::Message last = takeMessages().back();
    EXPECT_EQ(last.level, 0);
    EXPECT_EQ(last.function, "XML_parser");
    EXPECT_TRUE(last.text.ends_with(": a regular file is expected, but this is a directory")) << last;
}

}  // namespace
}  // namespace hwtest
