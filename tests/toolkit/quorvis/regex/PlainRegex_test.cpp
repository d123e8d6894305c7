#include "toolkit/quorvis/regex/PlainRegex.h"

#include <gtest/gtest.h>
#include <re2/re2.h>

#include <random>
#include <string>

using toolkit::quorvis::groupsOfPlainRegex;

namespace {

// None when it is wrong.
std::optional<int> groupsByCompiling(const std::string& pattern) {
    RE2::Options options;
    options.set_log_errors(false);
    const RE2 regex(pattern, options);
    return regex.ok() ? std::optional(regex.NumberOfCapturingGroups()) : std::nullopt;
}

}  // namespace

TEST(PlainRegex, KnowsWhatSignaturesUsuallyHold) {
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

TEST(PlainRegex, LeavesTheRestToTheCompiler) {
    for (const std::string pattern :
         {"(",    ")",   ")(",   "[",     "[]",       "[a-]", "[z-a]", "*a",          "a**",      "a|*",
          "(*a)", "a\\", "a{2}", "(?i)a", "(?P<n>a)", "\\1",  "\\pL",  "[[:alpha:]]", "\xC3\xA9", "\n"}) {
        EXPECT_EQ(groupsOfPlainRegex(pattern), std::nullopt) << pattern;
    }
    EXPECT_EQ(groupsOfPlainRegex(std::string(257, 'a')), std::nullopt);
}

TEST(PlainRegex, WhatItKnowsTheCompilerConfirms) {
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
