#include "cli/terminal/PrintableText.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

TEST(PrintableText, LinesAreEscapedSeparately) {
    EXPECT_EQ("a\n  b\\u001b\n\nc\n", printableLines("a\n  b\x1b\n\nc"));
    EXPECT_EQ("a\n", printableLines("a\n"));
    EXPECT_EQ("", printableLines(""));
}

TEST(PrintableText, ControlAndInvisibleCharactersAreEscaped) {
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

TEST(PrintableText, WideAndCombiningCharactersAreCountedInColumns) {
    EXPECT_EQ(3, columnsOf("abc"));
    EXPECT_EQ(4, columnsOf("\xe4\xbd\xa0\xe5\xa5\xbd"));
    EXPECT_EQ(1, columnsOf("e\xcc\x81"));
}

TEST(PrintableText, ClipKeepsWhatFitsAndAddsAnEllipsis) {
    EXPECT_EQ("abc", clip("abc", 3));
    EXPECT_EQ("ab…", clip("abcd", 3));
    EXPECT_EQ("…", clip("abcd", 1));
    EXPECT_EQ("\xe4\xbd\xa0…", clip("\xe4\xbd\xa0\xe5\xa5\xbd\xe5\xa5\xbd", 4));
}

TEST(PrintableText, ClippedPathKeepsItsEnds) {
    EXPECT_EQ("/usr/bin/x", clipPath("/usr/bin/x", 10));
    EXPECT_EQ("/usr…in/x", clipPath("/usr/bin/x", 9));
    EXPECT_EQ("…x", clipPath("/usr/bin/x", 2));
    EXPECT_EQ("…", clipPath("/usr/bin/x", 1));
    EXPECT_EQ("a…\xe5\xa5\xbd", clipPath("a\xe4\xbd\xa0\xe4\xbd\xa0\xe5\xa5\xbd", 5));
}

TEST(PrintableText, PadCountsColumnsNotBytes) {
    EXPECT_EQ("\xc3\xa4  ", pad("\xc3\xa4", 3));
    EXPECT_EQ("abc", pad("abc", 2));
}

TEST(PrintableText, WrapPrefersBlanksAndSemicolons) {
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

}  // namespace
}  // namespace zavcli
