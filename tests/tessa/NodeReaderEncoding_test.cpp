// Documents in encodings other than UTF-8.
#include <gtest/gtest.h>

#include "tests/tessa/Reading.h"

namespace tessa::test {
namespace {

using namespace std::string_literals;

std::string declared(const std::string& encoding, const std::string& rest) {
    return "<?xml version=\"1.0\" encoding=\"" + encoding + "\"?>\n" + rest;
}

// A byte order mark followed by two bytes for each 16-bit unit.
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

void expectRefused(const std::string& xml, const wchar_t* message, int line) {
    const Document document = readText(xml);
    EXPECT_EQ(document.status, 1) << xml;
    EXPECT_EQ(document.diagnostics, (std::vector<Diagnostic>{{Kind::kCritical, message, line}})) << xml;
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

// Some converters delay a letter until they know that it does not combine with the next, some are stateful, some use
// four bytes per character. Each text begins and ends with such letters and has them next to markup.
TEST(NodeReaderEncoding, ConvertersThatDelayCharactersLoseNothing) {
    const struct {
        const char* encoding;
        std::string text;
        const wchar_t* tree;
    } cases[] = {
        {"windows-1255", "<a x='\xE0'>\xE1\xCC\xE0<b/>\xE1</a>",
         L"a[x='\x5D0'](\"\xFB31\x5D0\" b \"\x5D1\")"},
        {"windows-1258", "<a x='o'>a\xCC\x61<b/>e</a>", L"a[x='o'](\"\xE0\x61\" b \"e\")"},
        {"TCVN", "<a x='o'>a\xB0\x61<b/>e</a>", L"a[x='o'](\"\xE0\x61\" b \"e\")"},
        {"EUC-JISX0213", "<a x='\xA4\xAB'>\xA4\xF7\xA4\xAB<b/>\xA4\xAB</a>",
         L"a[x='\x304B'](\"\x304B\x309A\x304B\" b \"\x304B\")"},
        {"Shift_JISX0213", "<a x='\x82\xA9'>\x82\xF5\x82\xA9<b/>\x82\xA9</a>",
         L"a[x='\x304B'](\"\x304B\x309A\x304B\" b \"\x304B\")"},
        {"BIG5-HKSCS", "<a x='\x88\x66'>\x88\x62\x88\x66<b/>\x88\x66</a>",
         L"a[x='\xCA'](\"\xCA\x304\xCA\" b \"\xCA\")"},
        {"UTF-7", "<a x='+AOQ-'>+AOQ-+2D3eAA-<b/>x+AOQ-</a>", L"a[x='\xE4'](\"\xE4\x1F600\" b \"x\xE4\")"},
        {"ISO-2022-JP", "<a>\x1B$B%F\x1B(B<b/>\x1B$B%F%9\x1B(B</a>", L"a(\"\x30C6\" b \"\x30C6\x30B9\")"},
        {"GB18030", "<a x='\x94\x39\xFC\x36'>\x81\x30\x86\x30\xD6\xD0<b/>\x81\x39\xEE\x39</a>",
         L"a[x='\x1F600'](\"\xB8\x4E2D\" b \"\x3400\")"},
        {"EUC-TW", "<a>\xC4\xE3\x8E\xA2\xA1\xA1<b/>\xC4\xE3</a>", L"a(\"\x4E2D\x4E42\" b \"\x4E2D\")"},
        {"UTF8", "<a>\xF0\x9F\x98\x80</a>", L"a(\"\x1F600\")"},
        {"latin1", "<\xE4>\xFF</\xE4>", L"\xE4(\"\xFF\")"},
    };
    for (const auto& each : cases) {
        for (const int blockSize : {0, 1, 2, 3, 5, 7, 64}) {
            EXPECT_EQ(treeOf(declared(each.encoding, each.text), {.blockSize = blockSize}), each.tree)
                << each.encoding << " in blocks of " << blockSize;
        }
    }
}

TEST(NodeReaderEncoding, LargeDocumentsAreConvertedCompletely) {
    std::string text;
    std::wstring wide;
    for (int i = 0; i < 100000; ++i) {
        text += "\xE1\xCC\xE0z";
        wide += L"\xFB31\x5D0z";
    }
    for (const int blockSize : {0, 1000, 65537}) {
        const Document document =
            readText(declared("windows-1255", "<a>" + text + "</a>"), {.blockSize = blockSize});
        EXPECT_TRUE(shown(document.root.get()) == L"a(\"" + wide + L"\")") << blockSize;
    }
}

TEST(NodeReaderEncoding, LinesAreCountedAfterConversion) {
    const std::string lines(70000, '\n');
    for (const char* const encoding : {"windows-1255", "GB18030", "UTF-7"}) {
        const Document document = readText(declared(encoding, "<a>" + lines + "</b>"));
        EXPECT_EQ(document.diagnostics,
                  (std::vector<Diagnostic>{
                      {Kind::kCritical, L"mismatched tag, the end of \"a\" is expected", 70002}}));
    }
}

std::string utf32(const std::u32string& text, bool bigEndian) {
    std::string bytes;
    for (const char32_t unit : text) {
        for (const unsigned shift : {0U, 8U, 16U, 24U})
            bytes += static_cast<char>((unit >> (bigEndian ? 24U - shift : shift)) & 0xFFU);
    }
    return bytes;
}

TEST(NodeReaderEncoding, Utf32IsKnownByItsBytes) {
    const std::u32string plain = U"<\u00E4 x='\u20AC'>a\U0001F600</\u00E4>";
    const std::u32string declarations[] = {U"<?xml version='1.0' encoding='UTF-32'?>",
                                           U"<?xml version='1.0' encoding='ISO-10646-UCS-4'?>"};
    for (const bool bigEndian : {false, true}) {
        std::vector<std::u32string> texts = {U"\xFEFF" + plain};
        for (const std::u32string& declaration : declarations) {
            texts.push_back(declaration + plain);
            texts.push_back(U"\xFEFF" + declaration + plain);
        }
        for (const std::u32string& text : texts) {
            for (const int blockSize : {0, 1, 3})
                EXPECT_EQ(treeOf(utf32(text, bigEndian), {.blockSize = blockSize}),
                          L"\xE4[x='\x20AC'](\"a\x1F600\")");
        }
    }
}

TEST(NodeReaderEncoding, Utf16IsKnownByOtherNames) {
    for (const char16_t* const name : {u"UTF-16", u"ISO-10646-UCS-2", u"UCS-2", u"utf-16"}) {
        const std::u16string text =
            u"<?xml version='1.0' encoding='" + std::u16string(name) + u"'?><a>\u20AC</a>";
        for (const bool bigEndian : {false, true}) {
            EXPECT_EQ(treeOf(utf16(text, bigEndian)), L"a(\"\x20AC\")");
            EXPECT_EQ(treeOf(utf16(text, bigEndian).substr(2)), L"a(\"\x20AC\")") << "without a mark";
        }
    }
}

TEST(NodeReaderEncoding, UnknownEncodingIsRefusedByItsName) {
    for (const char* const encoding : {"no-such-encoding", "x", "UTF-9"}) {
        const std::string name = encoding;
        expectRefused(declared(encoding, "<a/>"),
                      (L"unknown encoding \"" + std::wstring(name.begin(), name.end()) + L"\"").c_str(), 1);
    }
    expectRefused(declared(std::string(300, 'x'), "<a/>"),
                  (L"unknown encoding \"" + std::wstring(200, L'x') + L"...\"").c_str(), 1);
}

std::wstring notIn(const std::string& encoding) {
    const std::wstring wide(encoding.begin(), encoding.end());
    return L"the file is not in the encoding \"" + wide + L"\" that it declares";
}

TEST(NodeReaderEncoding, DeclarationThatBeliesTheBytesIsRefused) {
    for (const char* const encoding : {"UTF-16", "utf-16le", "ISO-10646-UCS-2", "UTF-32", "UCS-4LE",
                                       "EBCDIC-US", "IBM037", "WCHAR_T", "UNICODE"}) {
        expectRefused(declared(encoding, "<a/>"), notIn(encoding).c_str(), 1);
    }
    for (const char* const encoding : {"ISO-8859-1", "US-ASCII", "UTF-16", "windows-1252", "GB18030"}) {
        expectRefused("\xEF\xBB\xBF" + declared(encoding, "<a/>"), notIn(encoding).c_str(), 1);
    }
    EXPECT_EQ(treeOf("\xEF\xBB\xBF" + declared("utf-8", "<a/>")), L"a");
    for (const char16_t* const name : {u"UTF-8", u"ISO-8859-1", u"windows-1255", u"UTF-32"}) {
        const std::u16string wide(name);
        const std::u16string text = u"<?xml version='1.0' encoding='" + wide + u"'?><a/>";
        const std::wstring message = notIn(std::string(wide.begin(), wide.end()));
        for (const bool bigEndian : {false, true}) {
            expectRefused(utf16(text, bigEndian), message.c_str(), 1);
            expectRefused(utf16(text, bigEndian).substr(2), message.c_str(), 1);
        }
        if (wide == u"UTF-32") continue;
        const std::u32string wider(text.begin(), text.end());
        for (const bool bigEndian : {false, true}) expectRefused(utf32(wider, bigEndian), message.c_str(), 1);
    }
    const std::u16string little = u"<?xml version='1.0' encoding='UTF-16LE'?><a/>";
    EXPECT_EQ(treeOf(utf16(little, false)), L"a");
    expectRefused(utf16(little, true), notIn("UTF-16LE").c_str(), 1);
}

TEST(NodeReaderEncoding, WideCharactersWithoutMarkAndDeclarationAreRefused) {
    const wchar_t* const undeclared = L"an encoding other than UTF-8 must be declared";
    for (const bool bigEndian : {false, true}) {
        expectRefused(utf16(u"<a>x</a>", bigEndian).substr(2), undeclared, 1);
        expectRefused(utf32(U"<a>x</a>", bigEndian), undeclared, 1);
    }
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
    expectRefused(declared("GB18030", "<a>\n\xFF</a>"), invalid, 3);
    expectRefused(declared("windows-1255", "<a>\n\xE1\xD9</a>"), invalid, 3);
    expectRefused(declared("UTF-7", "<a>\n\xE1</a>"), invalid, 3);
    expectRefused(declared("UTF-7", "<a>\n+AAA-</a>"), invalid, 3);
    expectRefused(declared("EUC-JP", "<a/>\n\xA5"), invalid, 3);
    expectRefused(declared("ISO-2022-JP", "<a/>\n\x1B$"), invalid, 3);
}

TEST(NodeReaderEncoding, Utf16WithHalfACharacterIsRefused) {
    const std::string good = utf16(u"<a>x</a>", false);
    EXPECT_EQ(readText(good + "x").status, 1);
    EXPECT_EQ(readText("\xFF\xFE<\0a\0>\0\x00\xDC<\0/\0a\0>\0"s).status, 1);
    expectRefused("\xFF\xFE", L"no element found", 1);
}

}  // namespace
}  // namespace tessa::test
