#include <gtest/gtest.h>

#include "tests/toolkit/quorvis/LeafTester.h"
#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {
namespace {

class ContentLeaf : public ::testing::Test {
  protected:
    LeafResult search(const std::string& regex, const std::string& flags = "",
                      std::vector<Capture> captures = {}) {
        return tester_.ask(
            LeafKind::Content,
            {{Attribute::Path, "/etc/x.conf"}, {Attribute::Regex, regex}, {Attribute::Flags, flags}},
            std::move(captures));
    }
    void write(const std::string& content) { tester_.tree.write("etc/x.conf", content); }

    LeafTester tester_;
};

TEST_F(ContentLeaf, EachMatchIsAnItemWithItsLineAndCaptures) {
    write("# ports\nlisten 80;\n\nlisten 443 ssl;\n");
    const LeafResult result =
        search("^listen ([0-9]+)( ssl)?", "m", {{1, "port"}, {2, "ssl"}, {0, "whole"}, {9, "none"}});
    ASSERT_EQ(2U, result.items.size());
    const Item& plain = result.items[0];
    EXPECT_EQ("/etc/x.conf", *plain.find("path"));
    EXPECT_EQ("/etc/x.conf", plain.source);
    EXPECT_EQ("2", *plain.find("line"));
    EXPECT_EQ("listen 80", *plain.find("match"));
    EXPECT_EQ("80", *plain.find("port"));
    EXPECT_EQ(nullptr, plain.find("ssl")) << "a group without a part in the match gives no value";
    EXPECT_EQ(nullptr, plain.find("none"));
    const Item& secure = result.items[1];
    EXPECT_EQ("4", *secure.find("line"));
    EXPECT_EQ("443", *secure.find("port"));
    EXPECT_EQ(" ssl", *secure.find("ssl"));
    EXPECT_EQ("listen 443 ssl", *secure.find("whole"));
    EXPECT_FALSE(result.incomplete);
    EXPECT_TRUE(result.events.empty());
}

TEST_F(ContentLeaf, EmptyMatchesEnd) {
    write("aab");
    EXPECT_EQ(3U, search("a*").items.size()) << "\"aa\", before b, at the end";
    write("");
    EXPECT_EQ(1U, search("^$").items.size());
}

TEST_F(ContentLeaf, BinaryFilesAreSearched) {
    write(std::string("\x7f\x00\xff\xfeVersion 1.2\x00\x80", 17));
    EXPECT_EQ("1.2", LeafTester::first(search("Version ([0-9.]+)", "", {{1, "v"}}), "v"));
}

TEST_F(ContentLeaf, AMissingFileIsFalseAndAnUnreadableOneUnknown) {
    const LeafResult missing = search("a");
    EXPECT_TRUE(missing.items.empty());
    EXPECT_FALSE(missing.incomplete);
    EXPECT_TRUE(missing.events.empty());

    write("aaaa");
    tester_.settings.fileSystem.maxContentSize = 3;
    const LeafResult large = search("a");
    EXPECT_TRUE(large.incomplete);
    EXPECT_EQ(std::vector{EventCode::LimitBytes}, LeafTester::codes(large));
}

TEST_F(ContentLeaf, MatchesBeyondTheLimitLeaveItIncomplete) {
    write("a a a a");
    tester_.settings.fileSystem.maxMatches = 3;
    const LeafResult result = search("a");
    EXPECT_EQ(3U, result.items.size());
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::LimitMatches}, LeafTester::codes(result));
    EXPECT_FALSE(search("a a").incomplete) << "two matches are within the limit";
}

TEST_F(ContentLeaf, TheDeadlineIsReported) {
    write("a");
    tester_.settings.evaluation.timeLimit = std::chrono::seconds(0);
    const LeafResult result = search("a");
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::Deadline}, LeafTester::codes(result));
}

TEST_F(ContentLeaf, MaxBytesLimitsTheSearch) {
    write("one two");
    const auto start = [this](const std::string& maxBytes) {
        return tester_.ask(
            LeafKind::Content,
            {{Attribute::Path, "/etc/x.conf"}, {Attribute::Regex, "two"}, {Attribute::MaxBytes, maxBytes}});
    };
    EXPECT_TRUE(start("6").items.empty());
    EXPECT_FALSE(start("6").incomplete);
    EXPECT_EQ(1U, start("7").items.size());
    EXPECT_EQ(1U, start("99999999999").items.size());
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(start("7k")));
}

TEST_F(ContentLeaf, AnInvalidRegexIsUnknown) {
    write("a");
    const LeafResult result = search("(");
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(result));
}

TEST_F(ContentLeaf, ALongValueIsCut) {
    write(std::string(100'000, 'a'));
    EXPECT_EQ(std::string(8192, 'a'), LeafTester::first(search("a+"), "match"));
}

bool mayMatch(ContentFilters& filters, const char* path, const char* pattern, std::string_view content) {
    std::string problem;
    return filters.mayMatch(path, *compileRegex(pattern, "", problem), content);
}

TEST(ContentFilters, AnnouncedRegexesAreFilteredTogether) {
    ContentFilters filters;
    for (const char* pattern : {"one", "two", "thr..", "^four$", "f\u00fcnf", "[0-9]+\u00df"})
        filters.announce("/f", pattern, "");
    const std::string_view content = "two three f\u00fcnf";
    EXPECT_FALSE(mayMatch(filters, "/f", "one", content));
    EXPECT_TRUE(mayMatch(filters, "/f", "two", content));
    EXPECT_TRUE(mayMatch(filters, "/f", "thr..", content));
    EXPECT_FALSE(mayMatch(filters, "/f", "^four$", content));
    EXPECT_TRUE(mayMatch(filters, "/f", "f\u00fcnf", content));
    EXPECT_FALSE(mayMatch(filters, "/f", "[0-9]+\u00df", content));
    EXPECT_TRUE(mayMatch(filters, "/f", "never announced", content));
    EXPECT_TRUE(mayMatch(filters, "/g", "one", content)) << "another file";
}

TEST(ContentFilters, RegexesAreSearchedWithTheirFlags) {
    ContentFilters filters;
    for (const char* pattern : {"^b$", "TWO", "c.d", "e"}) filters.announce("/f", pattern, "ims");
    std::string problem;
    for (const char* pattern : {"^b$", "TWO", "c.d"})
        EXPECT_TRUE(filters.mayMatch("/f", *compileRegex(pattern, "ims", problem), "a\nb\ntwo c\nd"))
            << pattern;
    EXPECT_FALSE(filters.mayMatch("/f", *compileRegex("e", "ims", problem), "a\nb\ntwo c\nd"));
}

TEST(ContentFilters, AFewRegexesAreNotFiltered) {
    ContentFilters filters;
    for (const char* pattern : {"one", "two", "two", "three"}) filters.announce("/f", pattern, "");
    EXPECT_TRUE(mayMatch(filters, "/f", "one", "nothing of that"));
}

TEST(ContentFilters, AnInvalidRegexDoesNotAffectOthers) {
    ContentFilters filters;
    for (const char* pattern : {"(", "a", "b", "c", "d"}) filters.announce("/f", pattern, "");
    EXPECT_TRUE(mayMatch(filters, "/f", "a", "a"));
    EXPECT_FALSE(mayMatch(filters, "/f", "b", "a"));
}

TEST(ContentFilters, ThousandsOfRegexesAreFiltered) {
    ContentFilters filters;
    std::string content;
    for (int i = 0; i < 2500; ++i) {
        filters.announce("/f", "product" + std::to_string(i) + " v([0-9.]+)", "");
        if (i % 10 == 0) content += "product" + std::to_string(i) + " v1.2\n";
    }
    int silent = 0;
    for (int i = 0; i < 2500; ++i) {
        const std::string pattern = "product" + std::to_string(i) + " v([0-9.]+)";
        const bool may = mayMatch(filters, "/f", pattern.c_str(), content);
        EXPECT_TRUE(may || i % 10 != 0) << i;
        if (!may) ++silent;
    }
    EXPECT_EQ(2250, silent);
}

}  // namespace
}  // namespace toolkit::quorvis
