#include "toolkit/quorvis/regex/Regex.h"

#include <gtest/gtest.h>
#include <re2/re2.h>

#include <algorithm>
#include <random>

namespace toolkit::quorvis {
namespace {

bool matches(std::string_view pattern, std::string_view flags, std::string_view text) {
    std::string problem;
    const RE2* const regex = compileRegex(pattern, flags, problem);
    EXPECT_NE(nullptr, regex) << problem;
    return regex != nullptr && RE2::PartialMatch({text.data(), text.size()}, *regex);
}

TEST(Regex, FlagsApply) {
    const struct {
        const char* pattern;
        const char* flags;
        const char* text;
        bool matches;
    } kCases[] = {
        {"abc", "", "xABCx", false},       {"abc", "i", "xABCx", true},
        {"^b$", "", "a\nb\nc", false},     {"^b$", "m", "a\nb\nc", true},
        {"a.c", "", "a\nc", false},        {"a.c", "s", "a\nc", true},
        {"^B.C$", "ims", "x\nb\nc", true}, {"^B.C$", "smi", "x\nb\nc", true},
        {"^B.C$", "ms", "x\nb\nc", false}, {"\\d+", "", "v12", true},
        {"a|b", "i", "B", true},           {"", "", "", true},
    };
    for (const auto& test : kCases)
        EXPECT_EQ(test.matches, matches(test.pattern, test.flags, test.text)) << test.pattern << test.flags;
}

TEST(Regex, MatchesArbitraryBytes) {
    EXPECT_TRUE(matches("a.b", "",
                        "a\xff"
                        "b"));
    EXPECT_TRUE(matches("a[^x]b", "", std::string_view("a\0b", 3)));
    EXPECT_TRUE(matches("v([0-9]+)", "", "\xfe\xff\x80 v7"));
}

TEST(Regex, MatchesCharactersBeyondAscii) {
    EXPECT_TRUE(matches("^[\u00e4\u00f6]$", "", "\u00e4"));
    EXPECT_TRUE(matches("\u00c4", "i", "\u00e4"));
    EXPECT_TRUE(matches("^\\pL$", "", "\u00e4"));
    // Invalid UTF-8 is matched byte by byte.
    EXPECT_TRUE(matches("\xe4", "", "\xe4"));
}

TEST(Regex, ExpressionsAreCached) {
    std::string problem;
    const RE2* const regex = compileRegex("once", "i", problem);
    EXPECT_EQ(regex, compileRegex("once", "i", problem));
    EXPECT_NE(regex, compileRegex("once", "", problem));
}

TEST(Regex, RefusalsHaveAReason) {
    const char* const kTooComplex = "the expression is too complex: its repetitions make it too long";
    const std::string longest(4096, 'a');
    const auto groups = [](int count) {
        std::string pattern;
        for (int i = 0; i < count; ++i) pattern += "(a)";
        return pattern;
    };
    const struct {
        std::string pattern;
        const char* flags;
        const char* problem;
    } kCases[] = {
        {"(", "", "missing ): ("},
        {"(a)\\1", "", "invalid escape sequence: \\1"},
        {"(?=a)", "", "invalid perl operator: (?="},
        {"a", "x", "flags are letters of \"ims\""},
        {longest, "", ""},
        {longest + "a", "", "the expression is longer than 4 KiB"},
        {groups(32), "", ""},
        {groups(33), "", "more than 32 groups"},
        {"((a{100}){100}){100}", "", "invalid repetition size: {100}"},
        {"(a{0,70}b?){0,14}", "", ""},
        {"([ab]{0,900}|[cd]{0,900}|[ef]{0,900}|[gh]{0,900}|[ij]{0,900}|[kl]{0,900})x", "", kTooComplex},
        {"((a|b){0,30}){0,30}(c{0,900}|d{0,900})", "", kTooComplex},
        {"[\\p{L}\\p{N}]{1,64}x", "", kTooComplex},
        {"\\p{L}+ \\p{N}{1,20}", "", ""},
    };
    for (const auto& test : kCases) {
        for (int twice = 0; twice < 2; ++twice) {
            std::string problem;
            const RE2* const regex = compileRegex(test.pattern, test.flags, problem);
            EXPECT_EQ(test.problem, problem) << test.pattern.substr(0, 40);
            EXPECT_EQ(problem.empty(), regex != nullptr) << test.pattern.substr(0, 40);
        }
    }
}

TEST(Regex, QuotedValueMatchesItself) {
    std::string all;
    for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
    EXPECT_TRUE(matches("^" + quotedForRegex(all) + "$", "", all));
    EXPECT_FALSE(matches("^" + quotedForRegex(".*") + "$", "", "abc"));
    EXPECT_TRUE(matches("^" + quotedForRegex(".*") + "$", "", ".*"));
}

TEST(RegexSet, FindsTheMatchingExpressions) {
    const std::vector<std::string_view> patterns = {"^a", "b", "", "^b", "c$"};
    const RegexSet set(patterns, RE2::Options::EncodingLatin1);
    const auto matching = [&set](std::string_view text) {
        std::vector<int> indexes = set.matching(text).value();
        std::ranges::sort(indexes);
        return indexes;
    };
    EXPECT_EQ((std::vector<int>{0, 1, 2, 4}), matching("abc"));
    EXPECT_EQ((std::vector<int>{2}), matching(""));
    EXPECT_EQ((std::vector<int>{1, 2, 3}), matching("b\xff"));
}

TEST(RegexSet, FailsForLackOfMemory) {
    const std::string large = "(?:[ace-gik][bdhj]x){1000}";
    const std::vector<std::string_view> patterns(RegexSet::kMax, large);
    EXPECT_FALSE(RegexSet(patterns, RE2::Options::EncodingLatin1).matching("a").has_value());
}

TEST(RegexSet, FailsWithAnInvalidExpression) {
    const std::vector<std::string_view> patterns = {"a", "("};
    EXPECT_FALSE(RegexSet(patterns, RE2::Options::EncodingLatin1).matching("a").has_value());
}

// None when the pattern is invalid.
std::optional<int> groupsByCompiling(const std::string& pattern) {
    RE2::Options options;
    options.set_log_errors(false);
    const RE2 regex(pattern, options);
    return regex.ok() ? std::optional(regex.NumberOfCapturingGroups()) : std::nullopt;
}

TEST(PlainRegex, RecognisesTypicalExpressions) {
    const std::pair<const char*, int> cases[] = {
        {"OpenSSL (3\\.[0-9]+\\.[0-9]+)", 1},
        {"^\\s*worker_connections\\s+([0-9]+)\\s*;", 1},
        {"^\\s*listen\\s+([0-9]+)[ ;]", 1},
        {"version \"(?:v|r)?([^ ]+?)\"$", 1},
        {"", 0},
        {"plain", 0},
        {"((a)|b(c)*)+", 3},
    };
    for (const auto& [pattern, groups] : cases) EXPECT_EQ(groupsOfPlainRegex(pattern), groups) << pattern;
}

TEST(PlainRegex, GivesNoneForAllOtherExpressions) {
    for (const std::string pattern :
         {"(",    ")",   ")(",   "[",     "[]",       "[a-]", "[z-a]", "*a",          "a**",      "a|*",
          "(*a)", "a\\", "a{2}", "(?i)a", "(?P<n>a)", "\\1",  "\\pL",  "[[:alpha:]]", "\xC3\xA9", "\n"}) {
        EXPECT_EQ(groupsOfPlainRegex(pattern), std::nullopt) << pattern;
    }
    EXPECT_EQ(groupsOfPlainRegex(std::string(257, 'a')), std::nullopt);
}

TEST(PlainRegex, AgreesWithTheCompiler) {
    constexpr std::string_view kPieces[] = {"a",   "Z",   "0",   "-",  ".",  "*",   "+",   "?",  "(",
                                            ")",   "(?:", "|",   "^",  "$",  "[",   "]",   "[^", "a-z",
                                            "\\.", "\\d", "\\-", "\\", "{",  "}",   "\\S", " ",  "/",
                                            ",",   "0-9", "9-0", "_",  "\"", "\\]", "b-",  "?"};
    std::mt19937 random(7);
    int known = 0;
    for (int i = 0; i < 200'000; ++i) {
        std::string pattern;
        for (auto length = random() % 8 + 1; length > 0; --length)
            pattern += kPieces[random() % std::size(kPieces)];
        const std::optional<int> groups = groupsOfPlainRegex(pattern);
        if (!groups) continue;
        ++known;
        ASSERT_EQ(groups, groupsByCompiling(pattern)) << pattern;
    }
    EXPECT_GT(known, 1000);
}

}  // namespace
}  // namespace toolkit::quorvis
