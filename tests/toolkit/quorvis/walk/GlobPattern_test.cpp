#include "toolkit/quorvis/walk/GlobPattern.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <vector>

#include "toolkit/quorvis/walk/HashTables.h"

namespace toolkit::quorvis {
namespace {

TEST(NamePattern, WildcardsMatch) {
    struct Case {
        const char* pattern;
        const char* name;
        bool matches;
    };
    const Case cases[] = {
        {"*", "", true},
        {"*", ".hidden", true},
        {"lib*.so", "lib.so", true},
        {"lib*.so", "libz.so", true},
        {"lib*.so", "libz.so.1", false},
        {"lib*.so", "li.so", false},
        {"ab*ba", "aba", false},
        {"a*b*c", "aXbYbZc", true},
        {"a*b*c", "aXcYb", false},
        {"*a*a*a*b", "aaaaaaaaaaaaaaaaaaaaaaaa", false},
        {"x?", "xy", true},
        {"x?", "x", false},
        {"x?", "x\xc3\xa4", true},
        {"?", "\xc3\xa4", true},
        {"??", "\xe6\x97\xa5", false},
        {"*??", "\xe6\x97\xa5", false},
        {"?x", "\xc3x", true},
        {"[abc]1", "b1", true},
        {"[abc]1", "d1", false},
        {"[a-c0-9]", "7", true},
        {"[a-c0-9]", "-", false},
        {"[!a-c]", "d", true},
        {"[!a-c]", "b", false},
        {"[!a]x", "\xc3\xa4x", true},
        {"[]x]", "]", true},
        {"[!]x]", "]", false},
        {"[a-]", "-", true},
        {"[\\]]", "]", true},
        {"[\\!a]", "!", true},
        {"\\*", "*", true},
        {"\\*", "x", false},
        {"a\\?b", "a?b", true},
        {"\\\\*", "\\x", true},
    };
    for (const Case& one : cases)
        EXPECT_EQ(one.matches, NamePattern(one.pattern).matches(one.name))
            << one.pattern << " and " << one.name;
}

TEST(PathPattern, StepsMatchWholeNames) {
    struct Case {
        const char* pattern;
        const char* path;
        bool matches;
    };
    const Case cases[] = {
        {"/opt/*/x", "/opt/a/x", true},
        {"/opt/*/x", "/opt/a/b/x", false},
        {"/opt/*", "/opt", false},
        {"/opt/*", "/opt/a/b", false},
        {"/opt/**/x", "/opt/x", true},
        {"/opt/**/x", "/opt/a/b/c/x", true},
        {"/opt/**/x", "/opt/a/xy", false},
        {"/opt/**", "/opt", false},
        {"/opt/**", "/opt/a", true},
        {"/opt/**", "/opt/a/b", true},
        {"/opt/**/a/**/b", "/opt/a/a/c/b", true},
        {"/opt/**/a/**/b", "/opt/c/b", false},
        {"/opt/**/**/x", "/opt/x", true},
        {"/**/x", "/x", true},
        {"/**/x", "/a/b/x", true},
        {"/**/x", "/a/x/b", false},
        {"/**/a/x", "/x", false},
        {"/**/a/x", "/a/x", true},
        {"/**/a/x", "/b/a/x", true},
        {"/opt/**/a/x", "/opt/x", false},
        {"/opt/**/*/*", "/opt/a", false},
        {"/{opt,srv/www}/x", "/srv/www/x", true},
        {"/{opt,srv/www}/x", "/srv/x", false},
        {"/a{,b{c,d}}e", "/ae", true},
        {"/a{,b{c,d}}e", "/abde", true},
        {"/a{,b{c,d}}e", "/abe", false},
        {"//opt//x/", "/opt/x", true},
        {"/a,b", "/a,b", true},
        {"/\\{a\\,b\\}", "/{a,b}", true},
        {"/{[,],a}", "/,", true},
    };
    for (const Case& one : cases)
        EXPECT_EQ(one.matches, PathPattern(one.pattern).matches(one.path))
            << one.pattern << " and " << one.path;
}

TEST(ProblemOfPattern, OnlyValidPatternsHaveNone) {
    for (const char* proper :
         {"/a", "/**", "/a/**/b", "/{a,b}/*", "/[!a-z]", "/\\*", "/a/[]]", "/a,b", "/{a}"})
        EXPECT_FALSE(problemOfPattern(proper)) << proper;
    for (const char* wrong :
         {"",   "a",   "/",   "//",     "{/a,b}",      "/a/../b", "/.",  "/\\..",   "/a**", "/**a",   "/[a",
          "/[", "/[!", "/[]", "/[a/b]", "/[\xc3\xa4]", "/{a",     "/a}", "/{a,b}}", "/a\\", "/a\\/b", "/[\\"})
        EXPECT_TRUE(problemOfPattern(wrong)) << wrong;
    EXPECT_TRUE(problemOfPattern(std::string_view("/a\0b", 4)));
    EXPECT_TRUE(problemOfPattern("/" + std::string(4096, 'a')));
}

TEST(ProblemOfPattern, BracesStandForAtMost64Texts) {
    EXPECT_FALSE(problemOfPattern("/{a,b}{a,b}{a,b}{a,b}{a,b}{a,b}"));
    EXPECT_TRUE(problemOfPattern("/{a,b}{a,b}{a,b}{a,b}{a,b}{a,b}{a,b}"));
    EXPECT_TRUE(problemOfPattern("/" + std::string(4000, '{')));
    std::string many = "/{0";
    for (int i = 1; i < 64; ++i) many += "," + std::to_string(i);
    EXPECT_FALSE(problemOfPattern(many + "}"));
    EXPECT_TRUE(problemOfPattern(many + ",64}"));
}

bool needsWholeTree(const char* pattern) {
    std::vector<GlobSteps> alternatives;
    EXPECT_EQ(std::nullopt, parsePattern(pattern, alternatives)) << pattern;
    return searchesWholeTree(alternatives);
}

TEST(SearchesWholeTree, ADirectoryWithAFixedNameMustComeFirst) {
    EXPECT_TRUE(needsWholeTree("/**/x"));
    EXPECT_TRUE(needsWholeTree("/*/**/x"));
    EXPECT_TRUE(needsWholeTree("/{opt/,}**/x"));
    EXPECT_FALSE(needsWholeTree("/opt/**/x"));
    EXPECT_FALSE(needsWholeTree("/*/lib/**/x"));
    EXPECT_FALSE(needsWholeTree("/*/x"));
}

TEST(QuotedForPattern, AQuotedValueMatchesOnlyItself) {
    for (const char* value : {"*", "?", "[a-z]", "{a,b}", "a\\b", "a,b", "!a", "**", "plain-1.2_x"}) {
        const PathPattern pattern("/x" + quotedForPattern(value) + "/{" + quotedForPattern(value) + ",y}");
        EXPECT_TRUE(pattern.matches("/x" + std::string(value) + "/" + value)) << value;
        EXPECT_FALSE(pattern.matches("/xq/q")) << value;
    }
    const PathPattern set("/[" + quotedForPattern("a-c") + "]");
    EXPECT_TRUE(set.matches("/-"));
    EXPECT_FALSE(set.matches("/b"));
}

TEST(NameTable, EachNameHasItsOwnNumber) {
    NameTable table;
    EXPECT_EQ(0U, table.find("a"));
    std::set<std::uint32_t> numbers;
    for (int i = 0; i < 5000; ++i) numbers.insert(table.add("name" + std::to_string(i * 37)));
    for (const char* name : {"", "a", "ab", "abc", "abcd", "abcdefg", "abcdefgh", "abcdefghi"})
        numbers.insert(table.add(name));
    EXPECT_EQ(5008U, numbers.size());
    EXPECT_EQ(table.add("abc"), table.find("abc"));
    EXPECT_EQ("name37", table.nameOf(table.find("name37")));
    EXPECT_EQ(0U, table.find("name38"));
}

}  // namespace
}  // namespace toolkit::quorvis
