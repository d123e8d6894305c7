#include <gtest/gtest.h>

#include "tests/toolkit/quorvis/LeafTester.h"
#include "toolkit/quorvis/formats/Records.h"

namespace toolkit::quorvis {
namespace {

struct JsonValue {
    std::optional<std::string> value;
    std::string problem;
};

Records readOne(std::string_view format, std::string_view text, KeySteps each, KeySteps key) {
    RecordRequest request;
    request.each = std::move(each);
    request.keys = {{std::move(key), false, true}};
    request.limit = 10;
    return readRecords(format, text, request);
}

std::optional<std::string> firstOf(const Records& found) {
    if (found.records.empty()) return std::nullopt;
    return found.records.front().items.front();
}

std::optional<std::string> iniValue(std::string_view text, const std::string& section,
                                    const std::string& key) {
    return firstOf(readOne("ini", text, {{section, false}}, {{key, false}}));
}

JsonValue jsonValue(std::string_view text, std::string_view key) {
    const Records found = readOne("json", text, {}, parseKeySteps(key));
    return {firstOf(found), found.problem};
}

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
    EXPECT_EQ("", jsonValue(kJson, "version").problem);
}

TEST(PropertyFormats, DamagedJsonGivesItsOffsetAndTheValuesBeforeIt) {
    const JsonValue damaged = jsonValue(R"({"version": "1.2", "x": })", "version");
    EXPECT_EQ("1.2", damaged.value);
    EXPECT_EQ("damaged JSON at byte 25", damaged.problem);
    EXPECT_NE("", jsonValue("", "a").problem);
    EXPECT_NE("", jsonValue("{\"a\": \"\xff\"}", "a").problem);
}

TEST(PropertyFormats, DeeplyNestedJsonIsRefused) {
    const auto nested = [](std::size_t depth) { return std::string(depth, '[') + std::string(depth, ']'); };
    EXPECT_EQ("", jsonValue(nested(64), "a").problem);
    EXPECT_EQ("nested more than 64 levels", jsonValue(nested(65), "a").problem);
    EXPECT_EQ("nested more than 64 levels", jsonValue(std::string(1'000'000, '['), "a").problem);
}

TEST(PropertyFormats, TruncatedTextsGiveNoWrongValues) {
    for (std::size_t size = 0; size < kJson.size(); ++size) {
        const std::string cut(kJson.substr(0, size));
        EXPECT_NE("", jsonValue(cut, "late").problem) << size;
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
    LeafResult ask(const std::string& format, LeafTester::Attributes attributes,
                   std::vector<NamedKey> keys = {}) {
        attributes.emplace_back(Attribute::Path, "/release");
        attributes.emplace_back(Attribute::Format, format);
        tester_.keys = std::move(keys);
        return tester_.ask(LeafKind::Property, std::move(attributes));
    }
    // "value|name|version" of each item, one per line. A missing value is "-".
    static std::string itemsOf(const LeafResult& result) {
        std::string text;
        for (const Item& item : result.items) {
            for (const char* const field : {"value", "name", "version"}) {
                const std::string* const value = item.find(field);
                text += (value == nullptr ? "-" : *value) + "|";
            }
            text.back() = '\n';
        }
        return text;
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
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(ask("csv", {{Attribute::Key, "a"}})));
}

TEST_F(PropertyLeaf, EachElementIsAnItemWithItsSiblings) {
    tester_.tree.write("release", R"({"packages": [
        {"version": "1.0", "name": "a/b"},
        {"name": "none"},
        {"name": "c/d", "version": "2.0", "extra": {"version": "9"}}]})");
    LeafTester::Attributes attributes = {{Attribute::Each, "packages.*"}, {Attribute::Key, "version"}};
    const LeafResult result = ask("json", attributes, {{"name", "name"}});
    EXPECT_EQ("1.0|a/b|-\n2.0|c/d|-\n", itemsOf(result));
    EXPECT_FALSE(result.incomplete);
    attributes.emplace_back(Attribute::Above, "1");
    EXPECT_EQ("2.0|c/d|-\n", itemsOf(ask("json", attributes, {{"name", "name"}})));
}

TEST_F(PropertyLeaf, ARecordIsNamedByItsKey) {
    tester_.tree.write("release", R"({"packages": {
        "": {"name": "app", "version": "0.1"},
        "node_modules/x": {"version": "1.0"},
        "node_modules/x/node_modules/@y/z": {"version": "2.0"},
        "local": {"link": true}}})");
    const LeafTester::Attributes attributes = {
        {Attribute::Each, "packages.*"}, {Attribute::Key, "@"}, {Attribute::Regex, "node_modules/"}};
    EXPECT_EQ("node_modules/x|-|1.0\nnode_modules/x/node_modules/@y/z|-|2.0\n",
              itemsOf(ask("json", attributes, {{"version", "version"}})));
}

TEST_F(PropertyLeaf, AValueMayBeOptional) {
    tester_.tree.write("release", R"([{"n": "a", "v": "1"}, {"n": "b"}, {"n": "c", "v": null}, {"v": "2"}])");
    const LeafTester::Attributes attributes = {{Attribute::Each, "*"}, {Attribute::Key, "n"}};
    EXPECT_EQ("a|-|1\n", itemsOf(ask("json", attributes, {{"v", "version"}})));
    EXPECT_EQ("a|-|1\nb|-|-\nc|-|-\n", itemsOf(ask("json", attributes, {{"v", "version", true}})));
}

TEST_F(PropertyLeaf, ARecordMayBeAText) {
    tester_.tree.write("release", R"({"dependencies": {"a": "^1", "b": "^2", "c": {"x": "y"}}})");
    const LeafTester::Attributes attributes = {{Attribute::Each, "dependencies.*"}, {Attribute::Key, "@"}};
    EXPECT_EQ("a|-|^1\nb|-|^2\n", itemsOf(ask("json", attributes, {{".", "version"}})));
}

TEST_F(PropertyLeaf, EveryMatchOfAWildcardIsAnItem) {
    tester_.tree.write("release", R"({"a": {"x": {"v": 1}, "y": {"w": 2}, "z": {"v": 3}}, "*": {"v": 4}})");
    EXPECT_EQ("1|-|-\n3|-|-\n", itemsOf(ask("json", {{Attribute::Key, "a.*.v"}})));
    EXPECT_EQ("1|-|-\n3|-|-\n", itemsOf(ask("json", {{Attribute::Each, "a"}, {Attribute::Key, "*.v"}})));
    EXPECT_EQ("4|-|-\n", itemsOf(ask("json", {{Attribute::Key, "/*/v"}}))) << "a pointer is literal";
    EXPECT_EQ("4|-|-\n", itemsOf(ask("json", {{Attribute::Each, "/*"}, {Attribute::Key, "v"}})));
}

TEST_F(PropertyLeaf, TooManyRecordsLeaveItIncomplete) {
    tester_.settings.fileSystem.maxMatches = 2;
    tester_.tree.write("release", R"([{"n": 1}, {"n": 2}, {"n": 3}])");
    const LeafTester::Attributes records = {{Attribute::Each, "*"}, {Attribute::Key, "n"}};
    for (const LeafTester::Attributes& attributes : {records, {{Attribute::Key, "*.n"}}}) {
        const LeafResult result = ask("json", attributes);
        EXPECT_EQ("1|-|-\n2|-|-\n", itemsOf(result));
        EXPECT_EQ(std::vector{EventCode::LimitMatches}, LeafTester::codes(result));
    }
    tester_.settings.fileSystem.maxMatches = 3;
    EXPECT_FALSE(ask("json", records).incomplete);
}

TEST_F(PropertyLeaf, SectionsAreRecords) {
    tester_.tree.write("release", "v = 0\n[one]\nv = 1\n[two]\nw = 2\n[three]\nv = 3\n[]\nv = 4\n");
    EXPECT_EQ("0||-\n1|one|-\n3|three|-\n",
              itemsOf(ask("ini", {{Attribute::Each, "*"}, {Attribute::Key, "v"}}, {{"@", "name"}})));
}

TEST_F(PropertyLeaf, RepeatedKeysAreItemsIfAllAreAskedFor) {
    tester_.tree.write("release", "[s]\nk = 1\n[t]\nk = 0\n[s]\nk = 2\n");
    LeafTester::Attributes attributes = {{Attribute::Section, "s"}, {Attribute::Key, "k"}};
    EXPECT_EQ("2|-|-\n", itemsOf(ask("ini", attributes)));
    attributes.emplace_back(Attribute::Values, "all");
    EXPECT_EQ("1|-|-\n2|-|-\n", itemsOf(ask("ini", attributes)));
}

TEST_F(PropertyLeaf, NamesOfHeaderFieldsAreCaseInsensitive) {
    tester_.tree.write("release", "Package: a\nVERSION: 1\n\nPackage: b\nVersion: 2\n");
    EXPECT_EQ("1|a|-\n", itemsOf(ask("headers", {{Attribute::Key, "Version"}}, {{"package", "name"}})));
    EXPECT_EQ("1|a|-\n2|b|-\n", itemsOf(ask("headers", {{Attribute::Each, "*"}, {Attribute::Key, "version"}},
                                            {{"Package", "name"}})));
}

TEST_F(PropertyLeaf, AFileTooLargeForItsReaderIsUnknown) {
    tester_.tree.write("release", "a = 1\n" + std::string(std::size_t{5} << 20, '\n'));
    const LeafResult result = ask("toml", {{Attribute::Key, "a"}});
    EXPECT_TRUE(result.items.empty());
    EXPECT_TRUE(result.incomplete);
    EXPECT_EQ(std::vector{EventCode::LimitBytes}, LeafTester::codes(result));
}

TEST_F(PropertyLeaf, ShellAssignmentsMayHaveSeveralValues) {
    tester_.tree.write("release", "NAME=x\nVERSION='1.0'\n");
    const LeafTester::Attributes attributes = {{Attribute::Key, "VERSION"}};
    EXPECT_EQ("1.0|x|-\n", itemsOf(ask("shell", attributes, {{"NAME", "name"}})));
    EXPECT_EQ("", itemsOf(ask("shell", attributes, {{"NONE", "name"}})));
    EXPECT_EQ("1.0|-|-\n", itemsOf(ask("shell", attributes, {{"NONE", "name", true}})));
}

}  // namespace
}  // namespace toolkit::quorvis
