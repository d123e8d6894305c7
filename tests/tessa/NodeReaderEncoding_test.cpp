// Texts in other encodings than UTF-8.
#include <gtest/gtest.h>

#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

using namespace std::string_literals;

std::string declared(const std::string& encoding, const std::string& rest) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n" + rest;
}

// Each 16-bit unit as two bytes behind a byte order mark.
std::string utf16(const std::u16string& text, bool bigEndian) {
    std::string bytes;
    for (const char16_t unit : u"\xFEFF" + text) {
        const char low = static_cast<char>(unit & 0xFF);
        const char high = static_cast<char>(unit >> 8);
        bytes += bigEndian ? high : low;
        bytes += bigEndian ? low : high;
    }
    return bytes;
}

TEST(NodeReaderEncoding, Utf16WithAByteOrderMark) {
    const std::u16string plain = u"<\u00E4 x='\u20AC'>a\U0001F600</\u00E4>";
    const std::u16string withDeclaration = u"<?xml version='1.0' encoding='UTF-16'?>" + plain;
    for (const bool bigEndian : {false, true}) {
        for (const std::u16string& text : {plain, withDeclaration}) {
            EXPECT_EQ(treeOf(utf16(text, bigEndian)), L"\xE4[x='\x20AC'](\"a\x1F600\")");
            for (const int blockSize : {1, 3}) {
                EXPECT_EQ(treeOf(utf16(text, bigEndian), {.blockSize = blockSize}),
                          L"\xE4[x='\x20AC'](\"a\x1F600\")");
            }
        }
    }
}

TEST(NodeReaderEncoding, EncodingsOfTheParserAndOfTheSystem) {
    const struct {
        const char* encoding;
        std::string text;
        const wchar_t* tree;
    } cases[] = {
        {"UTF-8", "<a>\xC3\xA4</a>", L"a(\"\xE4\")"},
        {"utf-8", "<a>\xC3\xA4</a>", L"a(\"\xE4\")"},
        {"US-ASCII", "<a>x</a>", L"a(\"x\")"},
        {"ISO-8859-1", "<\xE4 x='\xF6'>\xFF\xA4</\xE4>", L"\xE4[x='\xF6'](\"\xFF\xA4\")"},
        {"ISO-8859-15", "<a>\xA4</a>", L"a(\"\x20AC\")"},
        {"ISO-8859-2", "<a x='\xB3'>\xB1</a>", L"a[x='\x142'](\"\x105\")"},
        {"windows-1252", "<a>\x80\x93\xE4\x94</a>", L"a(\"\x20AC\x201C\xE4\x201D\")"},
        {"windows-1251", "<a>\xCF\xF0\xE8</a>", L"a(\"\x41F\x440\x438\")"},
        {"KOI8-R", "<a>\xF0\xD2\xC9</a>", L"a(\"\x41F\x440\x438\")"},
        {"Shift_JIS", "<a x='\x83\x65'>\x83\x65\x83\x58\x83\x67 \xB1</a>",
         L"a[x='\x30C6'](\"\x30C6\x30B9\x30C8 \xFF71\")"},
        {"EUC-JP", "<a>\xA5\xC6\xA5\xB9\xA5\xC8 \x8F\xB0\xA1 \x8E\xB1</a>",
         L"a(\"\x30C6\x30B9\x30C8 \x4E02 \xFF71\")"},
        {"EUC-KR", "<a>\xC7\xD1</a>", L"a(\"\xD55C\")"},
        {"GBK", "<a>\xD6\xD0\xB9\xFA</a>", L"a(\"\x4E2D\x56FD\")"},
        {"Big5", "<a>\xA4\xA4</a>", L"a(\"\x4E2D\")"},
    };
    for (const auto& each : cases) {
        for (const int blockSize : {0, 1}) {
            EXPECT_EQ(treeOf(declared(each.encoding, each.text), {.blockSize = blockSize}), each.tree)
                << each.encoding;
        }
    }
}

void expectRefused(const std::string& xml, const wchar_t* message, int line) {
    const Document document = readText(xml);
    EXPECT_EQ(document.status, 1) << xml;
    EXPECT_EQ(document.complaints, (std::vector<Complaint>{{Kind::kCritical, message, line}})) << xml;
}

TEST(NodeReaderEncoding, UnknownEncodingIsRefused) {
    for (const char* const encoding : {"no-such-encoding", "x", "UTF-9"}) {
        expectRefused(declared(encoding, "<a/>"), L"unknown encoding", 1);
    }
}

TEST(NodeReaderEncoding, EncodingThatDoesNotExtendAsciiIsRefused) {
    for (const char* const encoding : {"UTF-7", "EBCDIC-US", "UTF-32", "UCS-4LE"}) {
        expectRefused(declared(encoding, "<a/>"), L"unknown encoding", 1);
    }
    expectRefused(declared("ISO-2022-JP", "<a>\n\x1B$B%F\x1B(B</a>"), L"not well-formed (invalid token)", 3);
}

TEST(NodeReaderEncoding, BytesThatAreNoCharacterAreRefusedWithTheirLine) {
    const wchar_t* const invalid = L"not well-formed (invalid token)";
    const char* const malformed[] = {"\xFF",
                                     "\x80",
                                     "\xC3",
                                     "\xC0\xAF",
                                     "\xE0\x80\x80",
                                     "\xED\xA0\x80",
                                     "\xF0\x80\x80\x80",
                                     "\xF4\x90\x80\x80",
                                     "\xEF\xBF\xBF"};
    for (const char* const bytes : malformed)
        expectRefused("<a>\n" + std::string(bytes) + "</a>", invalid, 2);
    expectRefused(declared("US-ASCII", "<a>\n\xE4</a>"), invalid, 3);
    expectRefused(declared("windows-1252", "<a>\n\x81</a>"), invalid, 3);
    expectRefused(declared("Shift_JIS", "<a>\n\x83\x21</a>"), invalid, 3);
    expectRefused(declared("EUC-JP", "<a>\n\xA5</a>"), invalid, 3);
}

TEST(NodeReaderEncoding, Utf16WithHalfACharacterIsRefused) {
    const std::string good = utf16(u"<a>x</a>", false);
    EXPECT_EQ(readText(good + "x").status, 1);
    EXPECT_EQ(readText("\xFF\xFE<\0a\0>\0\x00\xDC<\0/\0a\0>\0"s).status, 1);
    expectRefused("\xFF\xFE", L"no element found", 1);
}

TEST(NodeReaderEncoding, DeclarationThatBelaysTheBytesIsRefused) {
    expectRefused(declared("UTF-16", "<a/>"), L"encoding specified in XML declaration is incorrect", 1);
}

}  // namespace
}  // namespace tessa::test
