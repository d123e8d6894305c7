#include "cli/terminal/TextEncoding.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

TEST(TextEncoding, WideCharactersBecomeUtf8) {
    EXPECT_EQ("a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", toUtf8(L"a\u00e4\u20ac\U0001f600"));
    EXPECT_EQ("", toUtf8(L""));
}

TEST(TextEncoding, BytesInWideTextAreRestored) {
    const std::wstring signedBytes{L'a', static_cast<wchar_t>(-61), static_cast<wchar_t>(-92)};
    EXPECT_EQ("a\xc3\xa4", narrowBytes(signedBytes));
    EXPECT_EQ("a\xc3\xa4", narrowBytes(widenBytes("a\xc3\xa4")));
}

TEST(TextEncoding, InvalidCharactersBecomeTheReplacementCharacter) {
    const std::wstring surrogate(1, static_cast<wchar_t>(0xd800));
    const std::wstring tooLarge(1, static_cast<wchar_t>(0x110000));
    const std::wstring negative(1, static_cast<wchar_t>(-20));
    for (const std::wstring& text : {surrogate, tooLarge, negative}) EXPECT_EQ("\xef\xbf\xbd", toUtf8(text));
}

TEST(TextEncoding, Utf8BecomesWideCharacters) {
    EXPECT_EQ(L"a\u00e4\u20ac\U0001f600", fromUtf8("a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80"));
}

TEST(TextEncoding, OnlyTheInvalidBytesOfMalformedUtf8AreReplaced) {
    EXPECT_EQ(L"a\ufffdb", fromUtf8("a\xff"
                                    "b"));
    EXPECT_EQ(L"a\ufffd\ufffd", fromUtf8("a\xe2\x82"));
    EXPECT_EQ(L"\ufffd\ufffd", fromUtf8("\xc0\x80"));
    EXPECT_EQ(L"\ufffd\ufffd\ufffd\ufffd", fromUtf8("\xf4\x90\x80\x80"));
    EXPECT_EQ(L"\ufffd\ufffd\ufffd", fromUtf8("\xed\xa0\x80"));
}

TEST(TextEncoding, NulCharacterSurvivesARoundTrip) {
    const std::string nul("a\0b", 3);
    EXPECT_EQ(nul, toUtf8(fromUtf8(nul)));
}

TEST(TextEncoding, EveryByteOfAPathSurvivesARoundTrip) {
    std::string path;
    for (int byte = 1; byte < 256; ++byte) path += static_cast<char>(byte);
    std::string cut;
    for (const wchar_t character : widenBytes(path)) cut += static_cast<char>(character);
    EXPECT_EQ(path, cut);
}

TEST(TextEncoding, LowerCaseChangesOnlyAscii) {
    EXPECT_EQ("ab1\xc3\x84", lowerCase("Ab1\xc3\x84"));
}

}  // namespace
}  // namespace zavcli
