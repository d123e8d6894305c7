#include "toolkit/quorvis/versions/Version.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ostream>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {
namespace {

// Versions of one scheme in ascending order. The versions in one line are equal.
struct Ladder {
    Scheme scheme;
    std::vector<std::vector<std::string_view>> steps;
};

const Ladder kLadders[] = {
    {Scheme::Deb,
     {{"0~~", "00~~"},
      {"0~~a"},
      {"0~"},
      {"0", "0-0", "0:0"},
      {"1.0~rc1-1"},
      {"1.0", "1.0-0"},
      {"1.0-1~bpo1"},
      {"1.0-1"},
      {"1.0-1+b2"},
      {"1.0a"},
      {"1.0b"},
      {"1.0+dfsg"},
      {"1.0-1-1"},
      {"1.0.1"},
      {"1.2", "1.02"},
      {"1.10"},
      {"5.2.15-2"},
      {"5.2.15-2+b8"},
      {"9999999999999999999998"},
      {"9999999999999999999999"},
      {"1:0"},
      {"1:0:5-1"},
      {"2:1.0", "02:1.0"}}},
    {Scheme::Rpm,
     {{"1.0~rc1"},
      {"1.0~rc1^git1"},
      {"1.0~rc2"},
      {"1.0", "1_0", "1.00"},
      {"1.0^"},
      {"1.0^20210501"},
      {"1.0a", "1.0.a"},
      {"1.0b"},
      {"1.0.1"},
      {"1.1-1.el9", "0:1.1-1.el9"},
      {"1.1-2.el9"},
      {"1.1-2.1"},
      {"1.1-10.el9"},
      {"2"},
      {"10"},
      {"1:0.1-1"}}},
    {Scheme::Semver,
     {{"0.9.9"},
      {"1.0.0-alpha", "v1.0.0-alpha", "1-alpha", "1.0.0-alpha+x"},
      {"1.0.0-alpha.1"},
      {"1.0.0-alpha.beta"},
      {"1.0.0-beta"},
      {"1.0.0-beta.2"},
      {"1.0.0-beta.11"},
      {"1.0.0-beta.a-b"},
      {"1.0.0-rc.1"},
      {"1.0.0", "1", "v1.0", "V1.0.0+build.007"},
      {"1.0.1"},
      {"1.2"},
      {"1.10"},
      {"2"},
      {"99999999999999999999"}}},
    {Scheme::Pep440,
     {{"1.dev0", "1.0.dev", "v1.0.0-DEV_0"},
      {"1.0.dev456"},
      {"1.0a1", "1.0.alpha.1", "1-A-1"},
      {"1.0a2.dev456"},
      {"1.0a12.dev456"},
      {"1.0a12"},
      {"1.0b1.dev456"},
      {"1.0b2"},
      {"1.0b2.post345.dev456"},
      {"1.0b2.post345", "1.0b2-345"},
      {"1.0rc1.dev456"},
      {"1.0rc1", "1.0c1", "1.0-preview_1", "1.0pre1"},
      {"1.0", "1", " 1.0.0 "},
      {"1.0+abc.5"},
      {"1.0+abc.7"},
      {"1.0+5", "1.0+05"},
      {"1.0+5.1", "1.0+5-1"},
      {"1.0.post456.dev34"},
      {"1.0.post456", "1.0-456", "1.0.rev456", "1.0R456"},
      {"1.0.15"},
      {"1.1.dev1"},
      {"1.10"},
      {"1!0.1"},
      {"2!0"}}},
    {Scheme::Dotted,
     {{"0"},
      {"1.0.rc1"},
      {"1.0.1", "1_0_1", "v1.0.1", "1-0 1", "1.00.01"},
      {"1.1.1", "1.1.1.0"},
      {"1.1.1a"},
      {"1.1.1W", "1.1.1w"},
      {"1.1.1.1"},
      {"1.8", "1.8.0", "1.8.0_00"},
      {"1.8.0_392", "1.8.0.392"},
      {"1.10"},
      {"17.0.9+9"},
      {"17.0.10+7"},
      {"123456789012345678901"}}},
    {Scheme::Int,
     {{"-20"}, {"-3"}, {"0", "-0", "+0", "000"}, {"7", "+7", "007"}, {"10"}, {"123456789012345678901"}}},
    {Scheme::Text, {{""}, {"1.10"}, {"1.9"}, {"A"}, {"a"}, {"ab"}, {"\xff"}}},
};

TEST(Version, EachSchemeOrdersItsVersions) {
    for (const Ladder& ladder : kLadders) {
        for (std::size_t i = 0; i < ladder.steps.size(); ++i) {
            for (std::size_t j = 0; j < ladder.steps.size(); ++j) {
                for (const std::string_view left : ladder.steps[i]) {
                    for (const std::string_view right : ladder.steps[j]) {
                        const auto order = compareVersions(ladder.scheme, left, right);
                        ASSERT_TRUE(order.has_value()) << left << " and " << right;
                        EXPECT_TRUE(*order == (i <=> j))
                            << left << " and " << right << " of scheme " << static_cast<int>(ladder.scheme);
                    }
                }
            }
        }
    }
}

TEST(Version, RpmIgnoresReleasesUnlessBothHaveOne) {
    EXPECT_TRUE(compareVersions(Scheme::Rpm, "5.1.8-6.el9", "5.1.8") == std::weak_ordering::equivalent);
    EXPECT_TRUE(compareVersions(Scheme::Rpm, "5.1.8", "0:5.1.8-1") == std::weak_ordering::equivalent);
}

TEST(Version, InvalidVersionsAreNotCompared) {
    const std::pair<Scheme, std::vector<std::string_view>> kNone[] = {
        {Scheme::Deb, {"", "1:", ":1", "a:1", "1-", "-1", "1 2", "1_2", "1.0-1_2", "1\n"}},
        {Scheme::Rpm, {"", "1-", "-1", "1:", "a:1", "1 0", "1/2"}},
        {Scheme::Semver,
         {"", "v", "1.", ".1", "1.2.3.4", "01.2.3", "1.02", "a.b.c", "1.0.0-", "1.0.0-a..b", "1.0.0-01",
          "1.0.0+", "1.0.0+a_b", "1.0.0 ", "1.2.x", "vv1"}},
        {Scheme::Pep440,
         {"", "v", "a1", "1.0x", "1.0.", "1..0", "1.0+", "1.0+a..b", "1.0+-a", "!1", "1.0a1b2", "1.0--1"}},
        {Scheme::Dotted, {"", "abc", "v", "..."}},
        {Scheme::Int, {"", "-", "1.0", "0x1", " 1", "1-", "+-1"}},
    };
    for (const auto& [scheme, texts] : kNone) {
        for (const std::string_view text : texts) {
            EXPECT_FALSE(compareVersions(scheme, text, "1").has_value()) << "'" << text << "'";
            EXPECT_FALSE(compareVersions(scheme, "1", text).has_value()) << "'" << text << "'";
        }
    }
}

std::string randomDebVersion(std::mt19937& random) {
    static constexpr const char* kPieces[] = {"0", "1", "9",  "01", "10", "a",  "B",
                                              "z", "~", "~~", "+",  ".",  ".0", "rc"};
    const auto below = [&](std::size_t count) { return random() % count; };
    std::string version = below(5) == 0 ? std::to_string(below(2)) + ":" : "";
    version += std::to_string(below(3));
    for (std::size_t i = below(5); i > 0; --i) version += kPieces[below(std::size(kPieces))];
    if (below(2) == 0) return version;
    version += "-" + std::to_string(below(2));
    for (std::size_t i = below(3); i > 0; --i) version += kPieces[below(std::size(kPieces))];
    return version;
}

TEST(Version, DpkgAgreesWithTheOrderOfDebVersions) {
    const zavtest::ScratchDir scratch;
    std::mt19937 random(20261121);
    std::vector<std::pair<std::string, std::string>> pairs;
    std::ostringstream lines;
    for (int i = 0; i < 250; ++i) {
        const auto& [left, right] = pairs.emplace_back(randomDebVersion(random), randomDebVersion(random));
        lines << left << ' ' << right << '\n';
    }
    const std::string given = scratch.write("pairs", lines.str());
    const std::string told = scratch.path() / "orders";
    const std::string script =
        "while read a b; do if dpkg --compare-versions $a lt $b; then echo -1; "
        "elif dpkg --compare-versions $a gt $b; then echo 1; else echo 0; fi; done";
    ASSERT_EQ(0, std::system((script + " < " + given + " > " + told).c_str()));
    std::istringstream orders(zavtest::readAll(told));
    for (const auto& [left, right] : pairs) {
        int expected = 2;
        ASSERT_TRUE(orders >> expected);
        const auto order = compareVersions(Scheme::Deb, left, right);
        ASSERT_TRUE(order.has_value()) << left << " and " << right;
        EXPECT_TRUE(*order == (expected <=> 0)) << left << " and " << right;
    }
}

Truth tested(Attribute attribute, const char* bound, const char* version, const char* scheme = nullptr) {
    Leaf leaf;
    leaf.attributes = {{attribute, Template(bound)}};
    std::vector<std::string> values{bound};
    if (scheme != nullptr) {
        leaf.attributes.push_back({Attribute::Scheme, Template(scheme)});
        values.emplace_back(scheme);
    }
    return evaluateVersionTests(Query(leaf, values), Scheme::Dotted, version);
}

TEST(VersionTest, EachTestAcceptsItsSideOfTheBound) {
    const struct {
        Attribute attribute;
        Truth older, same, newer;
    } kTests[] = {
        {Attribute::Equals, Truth::False, Truth::True, Truth::False},
        {Attribute::AtLeast, Truth::False, Truth::True, Truth::True},
        {Attribute::Above, Truth::False, Truth::False, Truth::True},
        {Attribute::AtMost, Truth::True, Truth::True, Truth::False},
        {Attribute::Below, Truth::True, Truth::False, Truth::False},
    };
    for (const auto& test : kTests) {
        EXPECT_EQ(test.older, tested(test.attribute, "2.10", "2.9"));
        EXPECT_EQ(test.same, tested(test.attribute, "2.10", "2.10.0"));
        EXPECT_EQ(test.newer, tested(test.attribute, "2.10", "2.11"));
    }
}

TEST(VersionTest, SchemeOfTheQueryOverridesTheDefault) {
    EXPECT_EQ(Truth::True, tested(Attribute::Above, "1.0rc1", "1.0", "pep440"));
    EXPECT_EQ(Truth::False, tested(Attribute::Above, "1.0rc1", "1.0"));
}

TEST(VersionTest, InvalidVersionsAreUnknown) {
    EXPECT_EQ(Truth::Unknown, tested(Attribute::AtLeast, "x", "1"));
    EXPECT_EQ(Truth::Unknown, tested(Attribute::AtLeast, "1", "", "int"));
    EXPECT_EQ(Truth::Unknown, tested(Attribute::AtLeast, "1", "1", "roman"));
}

TEST(VersionTest, OtherAttributesAreNoVersionTests) {
    Leaf leaf;
    leaf.attributes = {{Attribute::Scheme, Template("deb")}};
    EXPECT_FALSE(hasVersionTest(Query(leaf, {"deb"})));
    EXPECT_EQ(Truth::True, evaluateVersionTests(Query(leaf, {"deb"}), Scheme::Deb, "no version"));
    leaf.attributes = {{Attribute::Below, Template("1")}};
    EXPECT_TRUE(hasVersionTest(Query(leaf, {"1"})));
}

}  // namespace
}  // namespace toolkit::quorvis
