#include "kest/String.h"

#include <gtest/gtest.h>

#include <vector>

namespace kest {
namespace {

int sign(int order) {
    return (order > 0) - (order < 0);
}

TEST(String, HoldsTheTextThatItWasMadeOf) {
    const String string(L"text \x20AC");
    EXPECT_STREQ(string.text(), L"text \x20AC");
    EXPECT_EQ(string.length(), 6U);
    EXPECT_EQ(string.view(), L"text \x20AC");
}

TEST(String, IsEmptyWithoutAText) {
    EXPECT_STREQ(String().text(), L"");
    EXPECT_STREQ(String(static_cast<const wchar_t*>(nullptr)).text(), L"");
    EXPECT_EQ(String(L"").length(), 0U);
}

TEST(String, KeepsItsOwnCopy) {
    wchar_t text[] = L"abc";
    const String string(text);
    text[0] = L'x';
    EXPECT_STREQ(string.text(), L"abc");
}

TEST(String, ANullTextComparesAsAnEmptyOne) {
    EXPECT_EQ(String().compareTo(nullptr), 0);
    EXPECT_GT(String(L"a").compareTo(nullptr), 0);
}

TEST(String, ComparesAsItsTextsSort) {
    const std::vector<const wchar_t*> ascending = {L"",   L"A", L"AB",   L"B",     L"a",
                                                   L"ab", L"b", L"\xE4", L"\x20AC"};
    for (std::size_t i = 0; i < ascending.size(); ++i) {
        for (std::size_t j = 0; j < ascending.size(); ++j) {
            const int order = sign(static_cast<int>(i) - static_cast<int>(j));
            const String string(ascending[i]);
            EXPECT_EQ(sign(string.compareTo(ascending[j])), order) << i << " to " << j;
            EXPECT_EQ(sign(string.compareTo(String(ascending[j]), 0)), order) << i << " to " << j;
        }
    }
}

TEST(String, CaseIsIgnoredWhereThatIsAskedFor) {
    EXPECT_EQ(String(L"GUID").compareTo(String(L"guid"), 1), 0);
    EXPECT_EQ(String(L"aZ09_").compareTo(String(L"Az09_"), 2), 0);
    EXPECT_NE(String(L"GUID").compareTo(String(L"guid"), 0), 0);
}

TEST(String, TextsThatDifferInMoreThanCaseSortWithoutIt) {
    EXPECT_LT(String(L"a").compareTo(String(L"B"), 1), 0);
    EXPECT_GT(String(L"B").compareTo(String(L"a"), 1), 0);
    EXPECT_LT(String(L"GUI").compareTo(String(L"guid"), 1), 0);
    EXPECT_GT(String(L"guid").compareTo(String(L"GUI"), 1), 0);
    EXPECT_GT(String(L"x").compareTo(String(), 1), 0);
}

TEST(String, OnlyAsciiLettersHaveACase) {
    EXPECT_NE(String(L"\xC4").compareTo(String(L"\xE4"), 1), 0);
    EXPECT_NE(String(L"[").compareTo(String(L"{"), 1), 0);
    EXPECT_NE(String(L"@").compareTo(String(L"`"), 1), 0);
}

}  // namespace
}  // namespace kest
