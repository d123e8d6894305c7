#include "toolkit/quorvis/formats/Records.h"

#include <gtest/gtest.h>

#include <utility>

namespace toolkit::quorvis {
namespace {

RecordRequest requestFor(std::string_view each, std::initializer_list<std::string_view> keys) {
    RecordRequest request;
    if (!each.empty()) request.each = parseKeySteps(each);
    for (const std::string_view key : keys) {
        const bool name = key == "@";
        request.keys.push_back({name ? KeySteps() : parseKeySteps(key), name, false});
    }
    request.limit = 100;
    return request;
}

// The items of each record, then its values, separated by blanks; a line for each record. A missing value is "-".
std::string textOf(const Records& found) {
    std::string text;
    for (const Record& record : found.records) {
        for (const std::string& item : record.items) text += item + " ";
        for (const auto& value : record.values) text += value.value_or("-") + " ";
        text.back() = '\n';
    }
    return text;
}

std::string read(std::string_view format, std::string_view text, std::string_view each,
                 std::initializer_list<std::string_view> keys) {
    const RecordRequest request = requestFor(each, keys);
    const Records found = readRecords(format, text, request);
    EXPECT_EQ("", found.problem);
    return textOf(found);
}

std::string problemOf(std::string_view format, std::string_view text, std::string_view key = "a") {
    const RecordRequest request = requestFor("", {key});
    return readRecords(format, text, request).problem;
}

std::string repeated(std::string_view text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) all += text;
    return all;
}

TEST(KeySteps, AreNamesOrAPointer) {
    const auto textOfSteps = [](std::string_view key) {
        std::string text;
        for (const KeyStep& step : parseKeySteps(key))
            text += (step.any ? "any" : "<" + step.name + ">") + " ";
        return text;
    };
    EXPECT_EQ("<a> any <b> ", textOfSteps("a.*.b"));
    EXPECT_EQ("<a*> <b> ", textOfSteps("a*.b"));
    EXPECT_EQ("<a> <*> <b/c> <d~> ", textOfSteps("/a/*/b~1c/d~0"));
    EXPECT_EQ("", textOfSteps("."));
    EXPECT_EQ("<> ", textOfSteps(""));
}

constexpr std::string_view kYaml = R"(# a lock file
lockfileVersion: '6.0'
settings: {auto: true, none: ~, "quoted": null, empty: }
packages:
  /a@1.0:
    version: 1.10
    tags: [x, "y", 'z']
  /b@2.0:
    version: "2.0"
text: |
  two
  lines
)";

TEST(YamlRecords, BlockAndFlowStylesAreRead) {
    EXPECT_EQ("6.0\n", read("yaml", kYaml, "", {"lockfileVersion"}));
    EXPECT_EQ("true - - -\n", read("yaml", kYaml, "settings", {"auto", "none", "empty", "missing"}));
    EXPECT_EQ("null\n", read("yaml", "a: 'null'", "", {"a"})) << "a text";
    EXPECT_EQ("", read("yaml", kYaml, "", {"settings.quoted"}));
    EXPECT_EQ("1.10 /a@1.0\n2.0 /b@2.0\n", read("yaml", kYaml, "packages.*", {"version", "@"}));
    EXPECT_EQ("x y z\n", read("yaml", kYaml, "", {"packages.*.tags.*"}));
}

TEST(YamlRecords, APointerReachesNamesWithDots) {
    EXPECT_EQ("", read("yaml", kYaml, "", {"packages./a@1.0.version"})) << "the dot is a separator";
    EXPECT_EQ("y\n", read("yaml", kYaml, "", {"/packages/~1a@1.0/tags/1"}));
    EXPECT_EQ("two\nlines\n\n", read("yaml", kYaml, "", {"text"}));
}

TEST(YamlRecords, EveryDocumentOfAFileCounts) {
    const std::string_view text = "---\nkind: A\nname: x\n---\nkind: B\n...\n---\n- kind: C\n";
    EXPECT_EQ("B\n", read("yaml", text, "", {"kind"}));
}

TEST(YamlRecords, AliasesOfTextsAreFollowed) {
    EXPECT_EQ("1.0 1.0\n", read("yaml", "a: &v 1.0\nb: *v\n", "", {"a", "b"}));
    EXPECT_EQ("2\n", read("yaml", "a: &v 1\nb: &v 2\nc: *v\n", "", {"c"})) << "the last anchor of a name";
    EXPECT_EQ("1\n", read("yaml", "x: &k name\ny: {*k : 1}\n", "", {"y.name"}));
}

TEST(YamlRecords, AliasesThatMayHideAValueAreAProblem) {
    const std::string_view text = "base: &b {v: 1}\none: *b\ntwo:\n  <<: *b\n  w: 2\n";
    EXPECT_EQ("an alias is not followed, line 2, column 6", problemOf("yaml", text, "one.v"));
    EXPECT_EQ("an alias is not followed, line 4, column 3", problemOf("yaml", text, "two.v"));
    EXPECT_EQ("", problemOf("yaml", text, "base.v")) << "not on the way";
    EXPECT_EQ("", problemOf("yaml", text, "three"));
}

TEST(YamlRecords, AliasesDoNotMultiply) {
    std::string text = "a0: &a0 x\n";
    for (int i = 1; i < 20; ++i) {
        const std::string before = "*a" + std::to_string(i - 1);
        text += "a" + std::to_string(i) + ": &a" + std::to_string(i) + " [" + repeated(before + ",", 9) +
                before + "]\n";
    }
    EXPECT_EQ("", read("yaml", text, "", {"none"}));
    EXPECT_NE("", problemOf("yaml", text, "a19.*.*"));
}

TEST(YamlRecords, DamagedAndUnsupportedDocumentsAreProblems) {
    EXPECT_EQ("damaged YAML, line 2, column 1", problemOf("yaml", "a: [1,\n"));
    EXPECT_TRUE(problemOf("yaml", "a: \x01").starts_with("damaged YAML, line "));
    EXPECT_EQ("a key is not a text, line 1, column 3", problemOf("yaml", "? [a, b]\n: 1\n"));
    EXPECT_EQ("nested more than 64 levels", problemOf("yaml", repeated("- ", 100) + "x"));
    EXPECT_NE("", problemOf("yaml", std::string(1'000'000, '[')));
    EXPECT_EQ("", problemOf("yaml", ""));
    EXPECT_EQ("1\n", textOf(readRecords("yaml", "a: 1\nb: [", requestFor("", {"a"}))))
        << "what precedes the damage";
}

TEST(YamlRecords, TruncatedDocumentsGiveNoWrongValues) {
    for (std::size_t size = 0; size < kYaml.size(); ++size) {
        const RecordRequest request = requestFor("packages.*", {"version"});
        for (const Record& record : readRecords("yaml", kYaml.substr(0, size), request).records) {
            const std::string& value = record.items.front();
            EXPECT_TRUE(std::string_view("1.10").starts_with(value) || value == "2.0") << value;
        }
    }
}

constexpr std::string_view kToml = R"(# lock
version = 3
exact = 1.10
day = 2024-05-27 07:32:00Z # not a text
flags = [true, false]
"dotted.name" = "d"
a.b.c = 'deep'

[metadata]
lock-version = "2.0"

[[package]]
name = "x"
version = "1.0"
dependencies = { y = "^2" }

[[package]]
name = "y"
version = "2.0"
)";

TEST(TomlRecords, TablesAndArraysAreRead) {
    EXPECT_EQ("3 1.10 2024-05-27 07:32:00Z deep\n",
              read("toml", kToml, "", {"version", "exact", "day", "a.b.c"}));
    EXPECT_EQ("true false\n", read("toml", kToml, "", {"flags.*"}));
    EXPECT_EQ("d 2.0\n", read("toml", kToml, "", {"/dotted.name", "metadata.lock-version"}));
    EXPECT_EQ("1.0 x ^2\n2.0 y -\n", read("toml", kToml, "package.*", {"version", "name", "dependencies.y"}));
}

TEST(TomlRecords, NumbersKeepTheirTextAfterOtherCharacters) {
    EXPECT_EQ("1.20\n", read("toml", "\"\u00e4\" = {'\U0001F600' = 1, v = 1.20}\r\n", "", {"/\u00e4/v"}));
    EXPECT_EQ("1_000 0x1F\n", read("toml", "a=1_000\r\nb=0x1F", "", {"a", "b"}));
}

TEST(TomlRecords, DamagedDocumentsAreProblems) {
    EXPECT_EQ("damaged TOML, line 2, column 5", problemOf("toml", "a = 1\nb = \n"));
    EXPECT_NE("", problemOf("toml", "a = \"\xff\""));
    EXPECT_NE("", problemOf("toml", "a = 1\na = 2"));
    EXPECT_EQ("", problemOf("toml", ""));
}

// The library must not be given them: its behaviour is undefined for some characters.
TEST(TomlRecords, CharactersBeyondAsciiAreOnlyInTextsAndComments) {
    for (const char* const stray :
         {"\u01cf = 1", "a = 1 \u01cf", "a = \"\"\"x\"\"\"\"\u01cf\n", "a = 1\n\u00a0b = 2"})
        EXPECT_NE(std::string::npos, problemOf("toml", stray).find(": a character beyond ASCII")) << stray;
    EXPECT_EQ("damaged TOML, line 2: a character beyond ASCII", problemOf("toml", "a = 1\n\u01cf = 2"));
    EXPECT_EQ("",
              problemOf("toml", "\uFEFF# \u01cf\na = '\u01cf'\nb = \"\"\"\u01cf\"\"\"\"\"\n'\u01cf' = 1"));
}

TEST(TomlRecords, NamesOfTablesBeginAsNames) {
    for (const char* const wrong :
         {"[{}]", "[[{\"a\": 1}]]", "[", "[ [a]]", "[[[a]]]", "[\na]", "[\r\n", "[#a]", "[.a]", "[]", "[[ ]]",
          "a = 1\n \t[=]", "[[", "[a", "a = [1]\n[{b = 1}]"}) {
        EXPECT_TRUE(problemOf("toml", wrong).starts_with("damaged TOML, line ")) << wrong;
    }
    EXPECT_EQ("damaged TOML, line 3: no name of a table", problemOf("toml", "# [{\na = 1\n [{}]"));
    for (const char* const right :
         {"[a]", "[[a]]", "[ 'a b' ]", "[[ \"a\" . b ]]", "[-_1]", "a = [\n[{b = 1}],\n [\n]]\n[b]",
          "a = { b = [{}, []] }\n[b]", "a = \"\"\"\n[{\"\"\"", "a = '[{'\n# [{\n"})
        EXPECT_EQ("", problemOf("toml", right)) << right;
}

TEST(TomlRecords, DeepDocumentsAreRefused) {
    EXPECT_EQ("", problemOf("toml", repeated("a.", 62) + "a = 1"));
    EXPECT_EQ("nested more than 64 levels", problemOf("toml", repeated("a.", 63) + "a = { a.a = 1 }"));
    EXPECT_EQ("a key has more than 64 steps", problemOf("toml", repeated("a.", 1'000'000) + "a = 1"));
    EXPECT_EQ("a key has more than 64 steps", problemOf("toml", "[" + repeated("a . ", 100'000) + "a]"));
    EXPECT_EQ("a key has more than 64 steps", problemOf("toml", repeated("\"a\".", 100'000) + "a = 1"));
    EXPECT_NE("", problemOf("toml", "a = " + repeated("[", 100'000)));
    EXPECT_NE("", problemOf("toml", "a = " + repeated("{a.a.a.a=", 100'000)));
}

TEST(TomlRecords, DotsInTextsAndCommentsAreNoSteps) {
    const std::string dots(1000, '.');
    EXPECT_EQ("",
              problemOf("toml", "a = \"" + dots + "\\\"" + dots + "\" # " + dots + "\nb = '" + dots + "'"));
    EXPECT_EQ("",
              problemOf("toml", "a = \"\"\"" + dots + "\n\"" + dots + "\"\"\"\nb = '''" + dots + "\n'''"));
}

TEST(TomlRecords, TruncatedDocumentsGiveNoWrongValues) {
    for (std::size_t size = 0; size < kToml.size(); ++size) {
        const RecordRequest request = requestFor("package.*", {"version"});
        for (const Record& record : readRecords("toml", kToml.substr(0, size), request).records) {
            const std::string& value = record.items.front();
            EXPECT_TRUE(value == "1.0" || value == "2.0") << value;
        }
    }
}

TEST(HeaderRecords, TheFirstParagraphCounts) {
    const std::string_view text =
        "Metadata-Version: 2.1\r\n"
        "Name: requests\r\n"
        "no field\r\n"
        " continues nothing\r\n"
        "Summary: in\r\n"
        "   two lines\r\n"
        "Empty:\r\n"
        "classifier: a\r\n"
        "Classifier: b\r\n"
        "not a name: x\r\n"
        "\r\n"
        "Version: 9 is only in the description\r\n";
    EXPECT_EQ("requests in two lines b - -\n",
              read("headers", text, "0", {"name", "summary", "classifier", "version", "not a name"}));
    RecordRequest request = requestFor("0", {"classifier"});
    request.all = true;
    EXPECT_EQ("a b\n", textOf(readRecords("headers", text, request)));
}

TEST(HeaderRecords, EveryParagraphMayBeARecord) {
    EXPECT_EQ("1 0 a\n2 2 c\n",
              read("headers", "\n\nPackage: a\nVersion: 1\n\nPackage: b\n\n\nPackage: c\nVersion: 2", "*",
                   {"version", "@", "package"}));
}

TEST(HeaderRecords, AManifestBreaksLinesAnywhere) {
    EXPECT_EQ("A title  in lines 1.0\n",
              read("manifest", "Title: A title \n  in li\n nes\nVersion: 1.\n 0\n\nVersion: 2\n", "0",
                   {"title", "version"}));
}

constexpr std::string_view kUnit =
    "# comment\n"
    "[Unit]\n"
    "Description=A \\\n"
    "# within\n"
    "   long text\n"
    "[Service]\n"
    "Environment=A=1\n"
    "Environment=\n"
    "Environment=\"B=2\"\n"
    "; ExecStart=/no\n"
    "ExecStart = /usr/bin/x --a=b\n"
    "ExecStart=/usr/bin/y \\\n"
    "  --c\n"
    "[Service]\n"
    "ExecStart=/usr/bin/z";

TEST(UnitRecords, LinesMayContinue) {
    EXPECT_EQ("A  long text\n", read("systemd", kUnit, "/Unit", {"Description"}));
    EXPECT_EQ("/usr/bin/z\n", read("systemd", kUnit, "/Service", {"ExecStart"}));
    EXPECT_EQ("", read("systemd", kUnit, "/Install", {"WantedBy"}));
}

TEST(UnitRecords, AnEmptyValueRemovesTheValuesBeforeIt) {
    RecordRequest request = requestFor("/Service", {"Environment"});
    request.all = true;
    request.emptyClears = true;
    EXPECT_EQ("\"B=2\"\n", textOf(readRecords("systemd", kUnit, request)));
    request.keys = {{parseKeySteps("ExecStart"), false, true}};
    EXPECT_EQ("/usr/bin/x --a=b /usr/bin/y  --c /usr/bin/z\n",
              textOf(readRecords("systemd", kUnit, request)));
}

TEST(Records, LongTextsAreCut) {
    const std::string text = "{\"a\": \"" + std::string(100'000, 'x') + "\"}";
    EXPECT_EQ(std::string(65'536, 'x') + "\n", read("json", text, "", {"a"}));
}

TEST(Records, TheReadersLookAtTheClock) {
    const std::string lines = repeated("# \n", 100);
    for (const char* const format : {"ini", "systemd", "headers", "manifest"}) {
        int looks = 0;
        readRecords(format, lines, requestFor("/0", {"a"}), [&looks] { ++looks; });
        EXPECT_GE(looks, 100) << format;
    }
    const std::string list = "[1" + repeated(",1", 100) + "]";
    for (const std::string format : {"json", "yaml", "toml"}) {
        int looks = 0;
        readRecords(format, (format == "toml" ? "a = " : "") + list, requestFor("", {"b"}),
                    [&looks] { ++looks; });
        EXPECT_GE(looks, 100) << format;
    }
}

}  // namespace
}  // namespace toolkit::quorvis
