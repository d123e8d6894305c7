#include "cli/terminal/Text.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

TEST(Text, WideCharactersBecomeUtf8) {
    EXPECT_EQ("a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80", toUtf8(L"a\u00e4\u20ac\U0001f600"));
    EXPECT_EQ("", toUtf8(L""));
}

TEST(Text, BytesOfALibraryTextComeBack) {
    const std::wstring signedBytes{L'a', static_cast<wchar_t>(-61), static_cast<wchar_t>(-92)};
    EXPECT_EQ("a\xc3\xa4", narrowBytes(signedBytes));
    EXPECT_EQ("a\xc3\xa4", narrowBytes(widenBytes("a\xc3\xa4")));
}

TEST(Text, LinesAreMadeSafeOneByOne) {
    EXPECT_EQ("a\n  b\\u001b\n\nc\n", printableLines("a\n  b\x1b\n\nc"));
    EXPECT_EQ("a\n", printableLines("a\n"));
    EXPECT_EQ("", printableLines(""));
}

TEST(Text, WhatIsNoCharacterBecomesTheReplacementCharacter) {
    const std::wstring surrogate(1, static_cast<wchar_t>(0xd800));
    const std::wstring tooLarge(1, static_cast<wchar_t>(0x110000));
    const std::wstring negative(1, static_cast<wchar_t>(-20));
    for (const std::wstring& text : {surrogate, tooLarge, negative}) EXPECT_EQ("\xef\xbf\xbd", toUtf8(text));
}

TEST(Text, Utf8BecomesWideCharacters) {
    EXPECT_EQ(L"a\u00e4\u20ac\U0001f600", fromUtf8("a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80"));
}

TEST(Text, MalformedUtf8LosesOnlyItsBadBytes) {
    EXPECT_EQ(L"a\ufffdb", fromUtf8("a\xff"
                                    "b"));
    EXPECT_EQ(L"a\ufffd\ufffd", fromUtf8("a\xe2\x82"));
    EXPECT_EQ(L"\ufffd\ufffd", fromUtf8("\xc0\x80"));
    EXPECT_EQ(L"\ufffd\ufffd\ufffd\ufffd", fromUtf8("\xf4\x90\x80\x80"));
    EXPECT_EQ(L"\ufffd\ufffd\ufffd", fromUtf8("\xed\xa0\x80"));
}

TEST(Text, NulCharacterSurvivesBothWays) {
    const std::string nul("a\0b", 3);
    EXPECT_EQ(nul, toUtf8(fromUtf8(nul)));
}

TEST(Text, EveryByteOfAPathSurvivesTheCutToLowBits) {
    std::string path;
    for (int byte = 1; byte < 256; ++byte) path += static_cast<char>(byte);
    std::string cut;
    for (const wchar_t character : widenBytes(path)) cut += static_cast<char>(character);
    EXPECT_EQ(path, cut);
}

TEST(Text, ControlCharactersAreSpeltOut) {
    const struct {
        const char* text;
        const char* shown;
    } cases[] = {
        {"plain", "plain"},
        {"two\nlines", "two\\nlines"},
        {"a\tb\rc", "a\\tb\\rc"},
        {"\x1b[31mred", "\\u001b[31mred"},
        {"\x7f", "\\u007f"},
        {"\xc2\x9b", "\\u009b"},                    // C1: control sequence introducer
        {"\xe2\x80\xaetxt.exe", "\\u202etxt.exe"},  // right-to-left override
        {"\xc2\x85", "\\u0085"},                    // C1: next line
        {"\xd8\x9c", "\\u061c"},                    // Arabic letter mark
        {"\xe2\x81\xa6", "\\u2066"},                // isolate
        {"a\xe2\x80\x8b"
         "b",
         "a\\u200bb"},  // zero width space
        {"\xef\xbb\xbfx", "\\ufeffx"},
        {"\xf3\xa0\x81\x81", "\\U000e0041"},  // a tag
        {"gr\xc3\xb6\xc3\x9f \xf0\x9f\x98\x80", "gr\xc3\xb6\xc3\x9f \xf0\x9f\x98\x80"},
    };
    for (const auto& [text, shown] : cases) EXPECT_EQ(shown, printable(text)) << text;
}

TEST(Text, WideAndCombiningCharactersAreCountedInColumns) {
    EXPECT_EQ(3, columnsOf("abc"));
    EXPECT_EQ(4, columnsOf("\xe4\xbd\xa0\xe5\xa5\xbd"));
    EXPECT_EQ(1, columnsOf("e\xcc\x81"));
}

TEST(Text, ClipKeepsWhatFitsAndMarksTheRest) {
    EXPECT_EQ("abc", clip("abc", 3));
    EXPECT_EQ("ab…", clip("abcd", 3));
    EXPECT_EQ("…", clip("abcd", 1));
    EXPECT_EQ("\xe4\xbd\xa0…", clip("\xe4\xbd\xa0\xe5\xa5\xbd\xe5\xa5\xbd", 4));
}

TEST(Text, PadFillsUpByColumnsNotBytes) {
    EXPECT_EQ("\xc3\xa4  ", pad("\xc3\xa4", 3));
    EXPECT_EQ("abc", pad("abc", 2));
}

TEST(Text, WrapBreaksAtBlanksAndBehindSemicolonsWherePossible) {
    using Lines = std::vector<std::string>;
    EXPECT_EQ((Lines{"fpu vme", "de pse"}), wrap("fpu vme de pse", 8));
    EXPECT_EQ((Lines{"abcd", "efgh", "i"}), wrap("abcdefghi", 4));
    EXPECT_EQ((Lines{"abc", "def"}), wrap("abc def", 3));
    EXPECT_EQ((Lines{"fpu;", "vme;de"}), wrap("fpu;vme;de", 6));
    EXPECT_EQ((Lines{"fpu;", "vme"}), wrap("fpu;vme", 4));
    EXPECT_EQ((Lines{"fpu", ";", "vme"}), wrap("fpu;vme", 3));
    EXPECT_EQ((Lines{"    x"}), wrap("    x", 5));
    EXPECT_EQ((Lines{""}), wrap("", 4));
}

TEST(Text, LowerCaseLeavesAllButAsciiAlone) {
    EXPECT_EQ("ab1\xc3\x84", lowerCase("Ab1\xc3\x84"));
}

}  // namespace
}  // namespace zavcli
