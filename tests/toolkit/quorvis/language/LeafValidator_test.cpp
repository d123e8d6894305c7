#include <gtest/gtest.h>

#include <map>

#include "tests/toolkit/quorvis/SignatureFiles.h"
#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/LeafSyntax.h"

using quorvistest::joined;
using quorvistest::match;
using quorvistest::read;
using toolkit::quorvis::Attribute;
using toolkit::quorvis::AttributeSet;
using toolkit::quorvis::LeafKind;
using toolkit::quorvis::LeafRules;
using toolkit::quorvis::leafRules;
using toolkit::quorvis::SignatureFile;

namespace {

using Values = std::map<Attribute, std::string>;

std::vector<Attribute> listOf(AttributeSet set) {
    std::vector<Attribute> list;
    for (; !set.empty(); set = set.without({set.first()})) list.push_back(set.first());
    return list;
}

// Valid values for the required attributes of a leaf of this kind.
Values needed(const LeafRules& rules) {
    const Values good = {{Attribute::Path, "/x"},
                         {Attribute::Pattern, "/x/y"},
                         {Attribute::Regex, "a"},
                         {Attribute::Format, rules.kind == LeafKind::FileVersion ? "jar"
                                             : rules.kind == LeafKind::Component ? "go"
                                                                                 : "ini"},
                         {Attribute::Key, "k"},
                         {Attribute::Select, "/a"},
                         {Attribute::Left, "1"},
                         {Attribute::Equals, "1"},
                         {Attribute::NameRegex, "a"}};
    Values values;
    for (const Attribute attribute : listOf(rules.required)) values[attribute] = good.at(attribute);
    if (rules.kind == LeafKind::Compare) values[Attribute::Equals] = "1";
    if (rules.kind == LeafKind::Package) values[Attribute::NameRegex] = "a";
    return values;
}

std::string leafWith(const LeafRules& rules, const Values& values) {
    std::string text = "<" + std::string(rules.name);
    for (const auto& [attribute, value] : values)
        text += " " + std::string(nameOf(attribute)) + "='" + value + "'";
    return match(text + "/>");
}

// Calls `take` for each attribute of each kind of leaf.
template <class Take>
void forEachAttribute(Take take) {
    for (int kind = 0; kind <= static_cast<int>(LeafKind::Compare); ++kind) {
        const LeafRules& rules = leafRules(static_cast<LeafKind>(kind));
        for (const Attribute attribute : listOf(rules.allowed)) {
            Values values = needed(rules);
            if (attribute == Attribute::Name) values.erase(Attribute::NameRegex);
            take(rules, attribute, values);
        }
    }
}

bool takesPatterns(Attribute attribute) {
    return AttributeSet{Attribute::Pattern, Attribute::Exclude, Attribute::Regex, Attribute::ArgsRegex,
                        Attribute::NameRegex}
        .contains(attribute);
}

}  // namespace

TEST(LeafValidator, RefusesOrReportsWildcardsInLiterals) {
    int warned = 0;
    forEachAttribute([&](const LeafRules& rules, Attribute attribute, Values values) {
        const std::string name(nameOf(attribute));
        for (const char* value : {"/1/*/x", "/1/x?", "/1/[ab]", "/1/{a,b}"}) {
            values[attribute] = value;
            const SignatureFile file = read(leafWith(rules, values));
            const std::string warnings = joined(file.warnings);
            if (takesPatterns(attribute)) {
                EXPECT_EQ(std::string::npos, warnings.find("wildcard")) << rules.name << " " << name;
                continue;
            }
            // A step of a selection may stand for any element.
            if (attribute == Attribute::Select && value == std::string_view("/1/*/x")) {
                EXPECT_TRUE(file.problems.empty()) << joined(file.problems);
                continue;
            }
            if (!file.problems.empty()) {
                EXPECT_NE(std::string::npos, joined(file.problems).find(": " + name + " \"")) << rules.name;
                continue;
            }
            ++warned;
            const std::string expected =
                "sig.xml:2:37: " + name + " \"" + value + "\" contains a wildcard, but is compared literally";
            EXPECT_TRUE(warnings.starts_with(expected)) << rules.name << " " << name << ": " << warnings;
            EXPECT_EQ(1U, file.signatures.size());
        }
    });
    EXPECT_GT(warned, 4 * 40);
}

TEST(LeafValidator, AcceptsTextsThatAreNoWildcards) {
    forEachAttribute([&](const LeafRules& rules, Attribute attribute, Values values) {
        if (takesPatterns(attribute)) return;
        for (const char* value :
             {"/1/x", "/usr/bin/[", "/1/{6F320B93}/x", "/1/]a[", "/1/}a,{", "${a}/${b.c}"}) {
            values[attribute] = value;
            EXPECT_EQ(std::string::npos, joined(read(leafWith(rules, values)).warnings).find("wildcard"))
                << rules.name << " " << nameOf(attribute) << " " << value;
        }
    });
}

TEST(LeafValidator, WarningsRecommendAPatternAttribute) {
    EXPECT_EQ(
        "sig.xml:2:37: path \"/opt/*/x/f\" contains a wildcard, but is compared literally; Glob finds by "
        "patterns\n",
        joined(read(match("<File path='/opt/*/x/f'/>")).warnings));
    EXPECT_EQ(
        "sig.xml:2:37: name \"lib*\" contains a wildcard, but is compared literally; nameRegex finds by "
        "expressions\n",
        joined(read(match("<Package name='lib*'/>")).warnings));
    EXPECT_EQ("sig.xml:2:37: name \"java*\" contains a wildcard, but is compared literally\n",
              joined(read(match("<Process name='java*'/>")).warnings));
}

TEST(LeafValidator, StepsToAllElementsAreNoWildcards) {
    const auto warningsOf = [](const std::string& attributes) {
        return joined(read(match("<Property path='/x' " + attributes + "/>")).warnings);
    };
    EXPECT_EQ("", warningsOf("format='json' key='a.*.b'"));
    EXPECT_EQ("", warningsOf("format='yaml' each='a.*' key='b'"));
    EXPECT_EQ("", warningsOf("format='ini' each='*' key='b'"));
    EXPECT_NE("", warningsOf("format='json' key='a*.b'"));
    EXPECT_NE("", warningsOf("format='json' key='/a/*'"));
    EXPECT_NE("", warningsOf("format='ini' key='a.*'"));
}

TEST(LeafValidator, RecordsFitTheirFormat) {
    const auto problemsOf = [](const std::string& attributes, const std::string& children = {}) {
        return joined(
            read(match("<Property path='/x' " + attributes + ">" + children + "</Property>")).problems);
    };
    const std::string place = "sig.xml:2:37: ";
    const std::pair<const char*, const char*> kCases[] = {
        {"format='csv' key='a'",
         "format \"csv\" is not properties, ini, systemd, shell, json, yaml, toml, headers or manifest\n"},
        {"format='shell' each='*' key='a'", "a file of format shell has no records for each\n"},
        {"format='properties' each='*' key='a'", "a file of format properties has no records for each\n"},
        {"format='headers' each='a.*' key='a'", "each \"a.*\" is not \"*\", the records of format headers\n"},
        {"format='ini' each='*' section='s' key='a'", "section and each exclude each other\n"},
        {"format='shell' values='all' key='a'", "a file of format shell has one value for a key\n"},
        {"format='ini' values='first' key='a'", "values \"first\" is not all or last\n"},
        {"format='json' each='' key='a'", "each \"\" is not steps to records\n"},
    };
    for (const auto& [attributes, problem] : kCases) EXPECT_EQ(place + problem, problemsOf(attributes));
    EXPECT_EQ(place + "key \"*.x\" of the value \"n\" does not name one value\n",
              problemsOf("format='json' key='a'", "<Value key='*.x' name='n'/>"));
    for (const char* const attributes :
         {"format='toml' each='a.*' key='@'", "format='systemd' section='Service' key='a' values='all'",
          "format='manifest' key='a' values='last'", "format='${f}' each='x' key='a'"}) {
        EXPECT_EQ("", problemsOf(attributes, "<Value key='x' name='n' optional='true'/>")) << attributes;
    }
}

TEST(LeafValidator, ValuesOfRecordsHaveNamesOfTheirOwn) {
    const auto problemsOf = [](const std::string& children) {
        return joined(
            read(match("<Property path='/x' format='json' key='a'>" + children + "</Property>")).problems);
    };
    EXPECT_NE(std::string::npos,
              problemsOf("<Value key='x' name='value'/>").find("is already that of a value"));
    EXPECT_NE(std::string::npos, problemsOf("<Value key='x' name='n'/><Value key='y' name='n'/>")
                                     .find("already that of another value"));
    EXPECT_NE(std::string::npos, problemsOf("<Value key='x' name='${'/>").find("cannot name a variable"));
    EXPECT_NE(std::string::npos,
              problemsOf("<Value key='x' name='n' optional='no'/>").find("not true or false"));
    EXPECT_NE(std::string::npos, problemsOf("<Value key='x'/>").find("name"));
    std::string many;
    for (int i = 0; i < 33; ++i) many += "<Value key='x' name='n" + std::to_string(i) + "'/>";
    EXPECT_NE(std::string::npos, problemsOf(many).find("more than 32 Value elements"));
    EXPECT_NE("", joined(read(match("<Xml path='/x' select='a'><Value key='x' name='n'/></Xml>")).problems));
}

TEST(LeafValidator, VariablesMayBeValuesOfRecords) {
    EXPECT_EQ(
        "",
        joined(read(match("<All><Property id='p' path='/x' format='json' key='a'><Value key='b' name='n'/>"
                          "</Property><Compare left='${p.n}' equals='1'/></All>"))
                   .warnings));
    EXPECT_NE(
        "",
        joined(read(match("<All><Property id='p' path='/x' format='json' key='a'><Value key='b' name='n'/>"
                          "</Property><Compare left='${p.b}' equals='1'/></All>"))
                   .warnings));
}

TEST(LeafValidator, VariablesNeitherAreNorHideWildcards) {
    EXPECT_EQ("", joined(read(match("<File path='${top}/x'/>")).warnings));
    EXPECT_NE("", joined(read(match("<File path='${top}/*/x'/>")).warnings));
    EXPECT_NE("", joined(read(match("<File path='/opt/{a${top},b}'/>")).warnings));
    EXPECT_EQ("", joined(read(match("<File path='/opt/{a${top}b}'/>")).warnings));
}
