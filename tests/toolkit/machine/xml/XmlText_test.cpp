#include "toolkit/machine/xml/XmlText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace toolkit {
namespace {

using namespace std::string_literals;

std::string xml(std::string_view bytes) {
    std::string text;
    appendXmlText(text, bytes);
    return text;
}

TEST(XmlText, IsAsciiWithReferences) {
    const std::pair<std::string, std::string> cases[] = {
        {"", ""},
        {"plain text 123", "plain text 123"},
        {"a<b>&\"c\"'d'", "a&lt;b&gt;&amp;&quot;c&quot;'d'"},
        {"]]>", "]]&gt;"},
        {"tab\tline\nreturn\r", "tab\tline\nreturn&#13;"},
        {"\x01\x1f\0x"s, "x"},
        {"~\x7f", "~&#127;"},
        {"\xC3\xBC", "&#252;"},  // UTF-8
        {"\xE2\x82\xAC", "&#8364;"},
        {"\xF0\x9F\x98\x80", "&#128512;"},
        {"M\xFCller", "M&#252;ller"},              // ISO-8859-1
        {"\xC3\xBC \xFC", "&#195;&#188; &#252;"},  // one bad byte makes all of it ISO-8859-1
        {"\x85", "&#133;"},
        {"\xEF\xBF\xBE\xEF\xBF\xBF|", "|"},  // U+FFFE, U+FFFF
        {"\xEF\xBF\xBD", "&#65533;"},
    };
    for (const auto& [bytes, text] : cases) EXPECT_EQ(xml(bytes), text);
}

TEST(XmlText, ReadsInvalidUtf8AsLatin1) {
    const std::pair<std::string, std::string> cases[] = {
        {"\xC0\xAF", "&#192;&#175;"},  // not the shortest form
        {"\xE0\x80\x80", "&#224;&#128;&#128;"},
        {"\xF0\x80\x80\x80", "&#240;&#128;&#128;&#128;"},
        {"\xED\xA0\x80", "&#237;&#160;&#128;"},            // a surrogate
        {"\xF4\x90\x80\x80", "&#244;&#144;&#128;&#128;"},  // beyond Unicode
        {"\xF5\x80\x80\x80", "&#245;&#128;&#128;&#128;"},
        {"\xE2\x82", "&#226;&#130;"},  // cut
        {"\x80", "&#128;"},
        {"\xFF\xFE", "&#255;&#254;"},
    };
    for (const auto& [bytes, text] : cases) EXPECT_EQ(xml(bytes), text);
}

TEST(XmlText, IsTheSameAtAnyOffset) {
    for (int byte = 0; byte < 256; ++byte) {
        const std::string character(1, static_cast<char>(byte));
        const std::string text = xml(character);
        for (std::size_t before = 0; before < 20; ++before) {
            for (const std::size_t behind : {0U, 1U, 7U, 8U, 9U}) {
                const std::string front(before, 'a');
                const std::string back(behind, '~');
                ASSERT_EQ(xml(front + character + back), front + text + back) << byte;
            }
        }
    }
}

TEST(XmlText, AnyByteBecomesPrintableAscii) {
    for (int byte = 0; byte < 256; ++byte) {
        for (const char c : xml(std::string(1, static_cast<char>(byte)))) {
            EXPECT_TRUE((c >= 0x20 && c <= 0x7E) || c == '\t' || c == '\n') << byte;
        }
    }
}

}  // namespace
}  // namespace toolkit
