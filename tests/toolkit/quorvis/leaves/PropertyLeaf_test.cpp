#include <gtest/gtest.h>

#include "tests/toolkit/quorvis/LeafTester.h"
#include "toolkit/quorvis/formats/FormatReaders.h"

namespace toolkit::quorvis {
namespace {

TEST(PropertyFormats, PropertiesAreReadAsInJava) {
    const std::string_view text =
        "# version=0\n"
        "  ! version=00\n"
        "version = 1.2\n"
        "colon: c:d\n"
        "blank\tb c\n"
        "tight=t \n"
        "\n"
        "long = one, \\\n"
        "       two, \\\r\n"
        "\tthree\n"
        "even = a\\\\\n"
        "next = n\n"
        "my\\ key\\=x = k\n"
        "umlaut = \\u00e4\\u20AC\\uD83D\\uDE00\\uD83D!\n"
        "escapes = \\t\\n\\r\\f\\q\\\\\n"
        "wrong = \\u00g4\n"
        "flag\n"
        "twice=1\ntwice=2\n"
        "last = l\\";
    const std::pair<const char*, const char*> kCases[] = {
        {"version", "1.2"},
        {"colon", "c:d"},
        {"blank", "b c"},
        {"tight", "t "},
        {"long", "one, two, three"},
        {"even", "a\\"},
        {"next", "n"},
        {"my key=x", "k"},
        {"umlaut", "\u00e4\u20ac\U0001F600\uFFFD!"},
        {"escapes", "\t\n\r\fq\\"},
        {"wrong", "u00g4"},
        {"flag", ""},
        {"twice", "2"},
        {"last", "l"},
    };
    for (const auto& [key, value] : kCases) EXPECT_EQ(value, propertyValue(text, key)) << key;
    EXPECT_EQ(std::nullopt, propertyValue(text, "none"));
    EXPECT_EQ(std::nullopt, propertyValue(text, "# version"));
}

TEST(PropertyFormats, IniFilesHaveSections) {
    const std::string_view text =
        "top = t\r\n"
        "; top = comment\n"
        "[one]\n"
        "version = \"1.0 ; rc\"\n"
        "# version = 9\n"
        "colon: c\n"
        "[ two ] ; comment\n"
        "version='2.0'\n"
        "half=\"x\n"
        "no value\n"
        "[one]\n"
        "more = m = n\n"
        "[broken\n"
        "x = y";
    const std::tuple<const char*, const char*, const char*> kCases[] = {
        {"", "top", "t"},          {"one", "version", "1.0 ; rc"}, {"one", "colon", "c"},
        {"two", "version", "2.0"}, {"two", "half", "\"x"},         {"one", "more", "m = n"},
        {"broken", "x", "y"},
    };
    for (const auto& [section, key, value] : kCases) EXPECT_EQ(value, iniValue(text, section, key)) << key;
    EXPECT_EQ(std::nullopt, iniValue(text, "", "version"));
    EXPECT_EQ(std::nullopt, iniValue(text, "two", "colon"));
    EXPECT_EQ(std::nullopt, iniValue(text, "two", "no value"));
}

constexpr std::string_view kJson = R"({
  "version": "1.2", "build": 17, "exact": 1.10, "flag": true, "nothing": null, "negative": -3,
  "packages": [ {"name": "a"}, {"name": "b", "tags": ["x", ["y", "z"]]}, 5 ],
  "a/b": {"~c": "pointer"}, "umlaut": "\u00e4\ud83d\ude00",
  "deep": {"version": "2.0"}, "twice": 1, "twice": 2, "late": "l" })";

TEST(PropertyFormats, JsonValuesAreFoundByPath) {
    const std::pair<const char*, const char*> kCases[] = {
        {"version", "1.2"},
        {"/version", "1.2"},
        {"build", "17"},
        {"exact", "1.10"},
        {"flag", "true"},
        {"negative", "-3"},
        {"packages.0.name", "a"},
        {"/packages/1/name", "b"},
        {"packages.1.tags.1.1", "z"},
        {"packages.2", "5"},
        {"/a~1b/~0c", "pointer"},
        {"umlaut", "\u00e4\U0001F600"},
        {"deep.version", "2.0"},
        {"twice", "2"},
        {"late", "l"},
    };
    for (const auto& [key, value] : kCases) EXPECT_EQ(value, jsonValue(kJson, key).value) << key;
    for (const char* key :
         {"nothing", "packages", "deep", "packages.3", "packages.0", "name", "", "/", "version.x"})
        EXPECT_EQ(std::nullopt, jsonValue(kJson, key).value) << key;
    EXPECT_EQ(std::nullopt, jsonValue(kJson, "version").damage);
}

TEST(PropertyFormats, DamagedJsonGivesItsOffsetAndTheValuesBeforeIt) {
    const JsonValue damaged = jsonValue(R"({"version": "1.2", "x": })", "version");
    EXPECT_EQ("1.2", damaged.value);
    EXPECT_EQ(25U, damaged.damage);
    EXPECT_NE(std::nullopt, jsonValue("", "a").damage);
    EXPECT_NE(std::nullopt, jsonValue("{\"a\": \"\xff\"}", "a").damage);
}

TEST(PropertyFormats, DeeplyNestedJsonIsRefused) {
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_EQ(std::nullopt, jsonValue(nested(64), "a").damage);
    EXPECT_NE(std::nullopt, jsonValue(nested(65), "a").damage);
    EXPECT_NE(std::nullopt, jsonValue(std::string(1'000'000, '['), "a").damage);
}

TEST(PropertyFormats, TruncatedTextsGiveNoWrongValues) {
    for (std::size_t size = 0; size < kJson.size(); ++size) {
        const std::string cut(kJson.substr(0, size));
        EXPECT_TRUE(jsonValue(cut, "late").damage) << size;
        EXPECT_NE("1", jsonValue(cut, "version").value) << size;
    }
    const std::string properties = "a\\u0041 = \\\n b\\u00e4\\\\\\\n c:=d\n";
    for (std::size_t size = 0; size <= properties.size(); ++size) {
        const std::string cut = properties.substr(0, size);
        const std::string value = propertyValue(cut, "aA").value_or("");
        const std::string whole = "b\u00e4\\c:=d";
        // A truncated escape is not an escape.
        EXPECT_TRUE(whole.starts_with(value) || value.starts_with("bu")) << cut;
    }
    const std::string ini = "[s]\nk = \"v\"\n";
    for (std::size_t size = 0; size <= ini.size(); ++size) {
        const std::string value = iniValue(ini.substr(0, size), "s", "k").value_or("v");
        EXPECT_TRUE(value == "v" || value == "\"v" || value == "\"" || value.empty()) << value;
    }
}

class PropertyLeaf : public ::testing::Test {
  protected:
    LeafResult ask(const std::string& format, LeafTester::Attributes attributes) {
        attributes.emplace_back(Attribute::Path, "/release");
        attributes.emplace_back(Attribute::Format, format);
        return tester_.ask(LeafKind::Property, std::move(attributes));
    }

    LeafTester tester_;
};

TEST_F(PropertyLeaf, EveryFormatGivesAValue) {
    tester_.tree.write("release", "JAVA_VERSION=\"17.0.9\"\n[s]\nVERSION: 2\n");
    EXPECT_EQ("17.0.9", LeafTester::first(ask("shell", {{Attribute::Key, "JAVA_VERSION"}}), "value"));
    EXPECT_EQ("\"17.0.9\"",
              LeafTester::first(ask("properties", {{Attribute::Key, "JAVA_VERSION"}}), "value"));
    EXPECT_EQ("2", LeafTester::first(ask("ini", {{Attribute::Key, "VERSION"}, {Attribute::Section, "s"}}),
                                     "value"));
    EXPECT_EQ("/release", ask("shell", {{Attribute::Key, "JAVA_VERSION"}}).items.at(0).source);
    tester_.tree.write("release", "{\"a\": {\"b\": 7}}");
    EXPECT_EQ("7", LeafTester::first(ask("json", {{Attribute::Key, "a.b"}}), "value"));
}

TEST_F(PropertyLeaf, AllTestsMustPass) {
    tester_.tree.write("release", "JAVA_VERSION=\"17.0.9\"\n");
    const std::tuple<Attribute, const char*, bool> kCases[] = {
        {Attribute::AtLeast, "17.0.10", false}, {Attribute::AtLeast, "17.0.8", true},
        {Attribute::Below, "18", true},         {Attribute::Equals, "17", false},
        {Attribute::Regex, "^17\\.", true},     {Attribute::Regex, "^18", false},
    };
    for (const auto& [attribute, value, passes] : kCases) {
        const LeafResult result = ask("shell", {{Attribute::Key, "JAVA_VERSION"}, {attribute, value}});
        EXPECT_EQ(passes, !result.items.empty()) << value;
        EXPECT_FALSE(result.incomplete);
    }
}

TEST_F(PropertyLeaf, AMissingValueIsFalse) {
    EXPECT_FALSE(ask("shell", {{Attribute::Key, "A"}}).incomplete) << "no such file";
    tester_.tree.write("release", "A=1\n");
    const LeafResult result = ask("shell", {{Attribute::Key, "B"}});
    EXPECT_TRUE(result.items.empty());
    EXPECT_FALSE(result.incomplete);
}

TEST_F(PropertyLeaf, AFileThatCannotBeReadIsUnknown) {
    tester_.tree.write("release", "{\"a\": 1, \"b\": ");
    const LeafResult damaged = ask("json", {{Attribute::Key, "b"}});
    EXPECT_TRUE(damaged.incomplete);
    EXPECT_EQ(std::vector{EventCode::Parse}, LeafTester::codes(damaged));
    EXPECT_EQ("1", LeafTester::first(ask("json", {{Attribute::Key, "a"}}), "value"));
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(ask("yaml", {{Attribute::Key, "a"}})));
}

}  // namespace
}  // namespace toolkit::quorvis
