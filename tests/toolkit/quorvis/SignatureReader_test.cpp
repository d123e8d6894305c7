#include "toolkit/quorvis/SignatureReader.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "tests/support/ScratchDir.h"

using toolkit::quorvis::Attribute;
using toolkit::quorvis::Condition;
using toolkit::quorvis::EventCode;
using toolkit::quorvis::Leaf;
using toolkit::quorvis::LeafKind;
using toolkit::quorvis::readSignatureFile;
using toolkit::quorvis::Settings;
using toolkit::quorvis::Signature;
using toolkit::quorvis::SignatureFile;

namespace {

// With the directory taken from what is told.
SignatureFile read(const std::string& text, const Settings& settings = {}) {
    const zavtest::ScratchDir dir;
    SignatureFile file = readSignatureFile(dir.write("sig.xml", text).string(), settings);
    const std::string prefix = dir.path().string() + "/";
    for (auto* const list : {&file.problems, &file.warnings}) {
        for (std::string& line : *list) {
            if (line.starts_with(prefix)) line.erase(0, prefix.size());
        }
    }
    return file;
}

std::string whole(const std::string& inner) {
    return "<Signatures>\n<Signature guid=\"G\" name=\"N\">" + inner + "</Signature>\n</Signatures>\n";
}

std::string match(const std::string& condition) {
    return whole("<Match>" + condition + "</Match>");
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
}

SignatureFile readExample(const std::string& name) {
    SignatureFile file = readSignatureFile(std::string(QUORVIS_SIGNATURES "/") + name + ".xml", {});
    EXPECT_EQ(joined(file.problems), "") << name;
    EXPECT_EQ(joined(file.warnings), "") << name;
    return file;
}

std::string valueOf(const Leaf& leaf, Attribute attribute) {
    for (const auto& given : leaf.attributes) {
        if (given.attribute == attribute) return std::string(given.value.source());
    }
    return "(none)";
}

}  // namespace

TEST(SignatureReader, ReadsAPackageWithAFile) {
    const SignatureFile file = readExample("bash");
    ASSERT_EQ(file.signatures.size(), 1U);
    const Signature& signature = file.signatures.front();
    EXPECT_EQ(signature.guid, "6f0d1c52-8f0e-4c39-9a55-0b5a3d1f0001");
    EXPECT_EQ(signature.name.source(), "GNU Bash");
    EXPECT_EQ(signature.metadata, "<Publisher>Free Software Foundation</Publisher>");
    EXPECT_EQ(signature.line, 3U);
    EXPECT_FALSE(signature.each.has_value());
    ASSERT_TRUE(signature.match.has_value());
    EXPECT_EQ(signature.match->kind, Condition::Kind::All);
    ASSERT_EQ(signature.match->children.size(), 2U);
    EXPECT_EQ(signature.match->children[1].leaf, 1U);
    ASSERT_EQ(signature.leaves.size(), 2U);
    EXPECT_EQ(signature.leaves[0].kind, LeafKind::Package);
    EXPECT_EQ(signature.leaves[0].id, "p");
    EXPECT_EQ(signature.leaves[0].min, 1U);
    EXPECT_EQ(signature.leaves[0].line, 5U);
    EXPECT_EQ(valueOf(signature.leaves[1], Attribute::Path), "/bin/bash");
    ASSERT_EQ(signature.output.size(), 1U);
    EXPECT_EQ(signature.output[0].name, "version");
    EXPECT_EQ(signature.output[0].value.pieces().at(0).text, "p.version");
}

TEST(SignatureReader, ReadsEveryExample) {
    const std::pair<const char*, std::size_t> cases[] = {{"bash", 2},   {"openssl", 3}, {"python", 1},
                                                         {"widget", 1}, {"nginx", 4},   {"java", 4}};
    for (const auto& [name, leaves] : cases) {
        const SignatureFile file = readExample(name);
        ASSERT_EQ(file.signatures.size(), 1U) << name;
        EXPECT_EQ(file.signatures.front().leaves.size(), leaves) << name;
    }
    const SignatureFile python = readExample("python");
    EXPECT_EQ(python.signatures[0].presets.at(0).fallback, "3.9");
    EXPECT_FALSE(python.signatures[0].name.constant());
    const SignatureFile openssl = readExample("openssl");
    EXPECT_EQ(openssl.signatures[0].leaves[2].captures.at(0).name, "upstream");
    EXPECT_EQ(openssl.signatures[0].leaves[2].captures.at(0).group, 1);
    EXPECT_EQ(readExample("java").signatures[0].each, 0U);
}

TEST(SignatureReader, AcceptsWhatTheLanguageAllows) {
    const std::string cases[] = {
        "<Signatures/>",
        "<Signatures xmlns:xsi='http://www.w3.org/2001/XMLSchema-instance' "
        "xsi:noNamespaceSchemaLocation='x'/>",
        match("<Package nameRegex='^lib.*' type='rpm' min='0' max='0'/>"),
        match("<Package name='${n}' atLeast='${v}' scheme='${s}'/>"),
        match("<File path='${dir}/x' kind='${k}' mode='0755' sha256='" + std::string(64, 'a') + "'/>"),
        match("<Glob pattern='${dir}/**/x' exclude='/opt/a/*' maxDepth='64'/>"),
        match("<Content path='/x' regex='${name} ([0-9]+)' flags='ims'><Capture group='1' "
              "name='n'/></Content>"),
        match("<Content path='/x' regex='[${name}]'/>"),
        match("<Xml path='/x' select='/a/b[2]/@c' equals='1'/>"),
        match("<Elf path='/x' soname='y'/>"),
        match("<FileVersion path='/x' format='python-dist' above='1'/>"),
        match("<Process exe='/x' argsRegex='a'/>"),
        match("<Compare left='${a}' below='2' scheme='semver'/>"),
        match("<Any><Package id='a' name='x'/><All><Package id='a' name='y'/><File id='b' "
              "path='/x'/></All></Any>"),
        match("<!-- why --><Not><Optional><File path='/x'/></Optional></Not>"),
        whole(
            "<Preset name='a'/><Preset name='b' default=''/><Each><File id='f' path='/x'/></Each><Output/>"),
        "<Signatures><Signature guid='{a.B:1_2-3}' name='x' revision='7'><Match><File path='/x'/></Match>"
        "</Signature><Signature guid='{a.B:1_2-3}' name='y'><Match><File path='/y'/></Match></Signature>"
        "</Signatures>",
    };
    for (const std::string& text : cases) EXPECT_EQ(joined(read(text).problems), "") << text;
}

TEST(SignatureReader, RefusesWithThePlaceAndTheReason) {
    const std::string capture = "<Capture group='1' name='n'/>";
    const std::pair<std::string, const char*> cases[] = {
        // the document
        {"", "no element found"},
        {"<Signatures>", "no element found"},
        {"<Signatures>\n<a></b></Signatures>", "sig.xml:2:"},
        {"<Other/>", "sig.xml:1:1: the root is \"Other\""},
        {"<!DOCTYPE Signatures []><Signatures/>", "document type declaration"},
        {"<Signatures a='1'/>", "unknown attribute \"a\" of Signatures"},
        {"<Signatures>text</Signatures>", "text \"text\" in Signatures"},
        {"<Signatures>\n <Signature2/></Signatures>",
         "sig.xml:2:2: unknown or misplaced element \"Signature2\""},
        {"<Signatures>\n<?xml version='1.0'?><Signature/></Signatures>", "a second XML declaration"},
        {match("<File path='/x' path='/y'/>"), "duplicate attribute"},
        {match("<File path='&x;'/>"), "undefined entity"},
        // the signature
        {"<Signatures><Signature name='N'><Match><File path='/x'/></Match></Signature></Signatures>",
         "Signature lacks the attribute \"guid\""},
        {"<Signatures><Signature guid='G'><Match><File path='/x'/></Match></Signature></Signatures>",
         "Signature lacks the attribute \"name\""},
        {"<Signatures><Signature guid='a b' name=''><Match><File "
         "path='/x'/></Match></Signature></Signatures>",
         "guid \"a b\""},
        {"<Signatures><Signature guid='" + std::string(129, 'a') +
             "' name=''><Match><File path='/x'/></Match></Signature></Signatures>",
         "guid"},
        {whole(""), "neither Each nor Match"},
        {whole("<Metadata a='1'/><Match><File path='/x'/></Match>"), "unknown attribute \"a\" of Metadata"},
        {whole("<Metadata><\xC3\xA9/></Metadata><Match><File path='/x'/></Match>"), "beyond ASCII"},
        {whole("<Match><File path='/x'/></Match><Preset name='a'/>"), "misplaced element \"Preset\""},
        {whole("<Match><File path='/x'/></Match><Match><File path='/x'/></Match>"), "\"Match\" in Signature"},
        {whole("<Preset/><Match><File path='/x'/></Match>"), "Preset lacks the attribute \"name\""},
        {whole("<Preset name='a'/><Preset name='a'/><Match><File path='/x'/></Match>"), "\"a\" stands twice"},
        {whole("<Preset name='quorvis.x'/><Match><File path='/x'/></Match>"), "belongs to the scanner"},
        {whole("<Each><File path='/x'/></Each>"), "File lacks the attribute \"id\""},
        {whole("<Each><File id='a' path='/x'/><File id='b' path='/x'/></Each>"), "more than one leaf"},
        {whole("<Each><Compare id='a' left='1' equals='1'/></Each>"), "\"Compare\" in Each"},
        {whole("<Each/>"), "Each has no leaf"},
        {whole("<Match><File path='/x'/></Match><Output><Variable name='a'/></Output>"),
         "Variable lacks the attribute \"value\""},
        {whole("<Match><File path='/x'/></Match><Output><Variable name='a' value='${'/></Output>"),
         "not closed"},
        {whole("<Match><File path='/x'/></Match><Output><Variable name='a' value='1'/><Variable name='a' "
               "value='2'/></Output>"),
         "\"a\" stands twice"},
        // conditions
        {match(""), "Match has no condition"},
        {match("<All/>"), "All has no condition"},
        {match("<Not><File path='/x'/><File path='/y'/></Not>"), "Not has more than one condition"},
        {match("<File path='/x'/><File path='/y'/>"), "Match has more than one condition"},
        {match("<All>x<File path='/x'/></All>"), "text \"x\" in All"},
        {match("<All id='a'><File path='/x'/></All>"), "unknown attribute \"id\" of All"},
        {match("<Exec path='/x'/>"), "element \"Exec\" in Match"},
        {match("<All><File id='a' path='/x'/><File id='a' path='/y'/></All>"), "id \"a\" stands twice"},
        {match("<Any><All><File id='a' path='/x'/><File id='a' path='/y'/></All><File path='/z'/></Any>"),
         "id \"a\" stands twice"},
        {match("<All><File id='a' path='/x'/><Any><File id='a' path='/y'/><File path='/z'/></Any></All>"),
         "id \"a\" stands twice"},
        {match("<All><Any><File id='a' path='/y'/><File path='/z'/></Any><File id='a' path='/x'/></All>"),
         "id \"a\" stands twice"},
        // leaves
        {match("<File/>"), "sig.xml:2:37: File lacks the attribute \"path\""},
        {match("<File path='/x' regex='a'/>"), "unknown attribute \"regex\" of File"},
        {match("<File path='/x' nonsense='a'/>"), "unknown attribute \"nonsense\" of File"},
        {match("<File path='/x' id='a.b'/>"), "id \"a.b\""},
        {match("<File path='/x' id='quorvis'/>"), "id \"quorvis\""},
        {match("<File path='/x' min='-1'/>"), "min \"-1\" is not a number"},
        {match("<File path='/x' max='${a}'/>"), "max \"${a}\" is not a number"},
        {match("<File path='/x' min='3' max='2'/>"), "min is greater than max"},
        {match("<File path='x'/>"), "path \"x\" is not an absolute path"},
        {match("<File path='x${a}'/>"), "is not an absolute path"},
        {match("<File path='/x' kind='socket'/>"), "kind \"socket\""},
        {match("<File path='/x' minSize='1k'/>"), "minSize \"1k\""},
        {match("<File path='/x' sha256='abc'/>"), "sha256 \"abc\""},
        {match("<File path='/x' mode='rwx'/>"), "mode \"rwx\""},
        {match("<File path='/x'><Capture group='1' name='n'/></File>"), "element \"Capture\" in File"},
        {match("<Package/>"), "none of the attributes name, nameRegex"},
        {match("<Package name='a' nameRegex='a'/>"), "exclude each other"},
        {match("<Package name=''/>"), "name \"\" is not a name"},
        {match("<Package name='a' type='msi'/>"), "type \"msi\""},
        {match("<Package name='a' scheme='maven'/>"), "scheme \"maven\""},
        {match("<Package name='a' atLeast=''/>"), "atLeast \"\" is not a version"},
        {match("<Package name='a' atLeast='x' scheme='int'/>"), "atLeast \"x\" is not a version"},
        {match("<Package name='a' compare='release'/>"), "compare \"release\""},
        {match("<Package nameRegex='('/>"), "nameRegex \"(\": missing"},
        {match("<Glob pattern='x/*'/>"), "pattern \"x/*\""},
        {match("<Glob pattern='/x[/y'/>"), "pattern \"/x[/y\""},
        {match("<Glob pattern='/**/x'/>"), "no directory of a fixed name"},
        {match("<Glob pattern='/x/*' maxDepth='65'/>"), "maxDepth \"65\""},
        {match("<Content path='/x'/>"), "Content lacks the attribute \"regex\""},
        {match("<Content path='/x' regex='a(?=b)'/>"), "regex \"a(?=b)\": "},
        {match("<Content path='/x' regex='(a)\\1'/>"), "regex"},
        {match("<Content path='/x' regex='" + std::string(4097, 'a') + "'/>"), "4 KiB"},
        {match("<Content path='/x' regex='(a)${b}['/>"), "regex"},
        {match("<Content path='/x' regex='a' flags='x'/>"), "flags \"x\""},
        {match("<Content path='/x' regex='a'>" + capture + "</Content>"), "regex has no group 1"},
        {match("<Content path='/x' regex='(a)'><Capture group='1'/></Content>"),
         "lacks the attribute \"name\""},
        {match("<Content path='/x' regex='(a)'><Capture group='33' name='n'/></Content>"), "group \"33\""},
        {match("<Content path='/x' regex='(a)'><Capture group='1' name='path'/></Content>"), "name \"path\""},
        {match("<Content path='/x' regex='(a)'>" + capture + capture + "</Content>"), "another group"},
        {match("<Elf path='/x'>" + capture + "</Elf>"), "without regex"},
        {match("<Property path='/x' format='yaml' key='k'/>"), "format \"yaml\""},
        {match("<Property path='/x' format='jar' key='k'/>"), "format \"jar\""},
        {match("<FileVersion path='/x' format='ini'/>"), "format \"ini\""},
        {match("<Xml path='/x' select='a['/>"), "select \"a[\""},
        {match("<SwidTag patch='maybe'/>"), "patch \"maybe\""},
        {match("<Compare left='1'/>"), "none of the attributes above, atLeast, atMost, below, equals"},
    };
    for (const auto& [text, reason] : cases) {
        const SignatureFile file = read(text);
        const std::string told = joined(file.problems);
        EXPECT_NE(told.find(reason), std::string::npos) << text << "\n" << told;
        EXPECT_TRUE(told.starts_with("sig.xml:")) << told;
        EXPECT_TRUE(file.signatures.empty()) << text;
    }
}

TEST(SignatureReader, TellsOfAllProblemsInTheirOrder) {
    const SignatureFile file = read(
        "<Signatures>\n"
        "<Signature guid='A' name='a'><Match><File/></Match></Signature>\n"
        "<Signature guid='B' name='b'><Match><File path='/b'/></Match></Signature>\n"
        "<Signature guid='\xC3\xA9' name='c'>\n\t<Match><Package name='c' type='x' "
        "scheme='y'/></Match></Signature>\n"
        "</Signatures>\n");
    EXPECT_EQ(joined(file.problems),
              "sig.xml:2:37: File lacks the attribute \"path\"\n"
              "sig.xml:4:1: guid \"\xC3\xA9\" is not made of 1 to 128 letters, digits and .:_{}-\n"
              "sig.xml:5:9: scheme \"y\" is not deb, rpm, semver, pep440, dotted, int or text\n"
              "sig.xml:5:9: type \"x\" is not dpkg, rpm, apk, pacman, snap, flatpak or any\n");
    EXPECT_TRUE(file.signatures.empty());
}

TEST(SignatureReader, ColumnsCountCharacters) {
    EXPECT_TRUE(read("<Signatures><!-- \xC3\xA9\xE2\x82\xAC --><x/></Signatures>")
                    .problems.at(0)
                    .starts_with("sig.xml:1:24: "));
    EXPECT_TRUE(
        read("<Signatures><!-- \xE9\xA4 --><x/></Signatures>").problems.at(0).starts_with("sig.xml:1:24: "));
}

TEST(SignatureReader, SkipsInvalidSignaturesWhenItIsTold) {
    Settings settings;
    settings.evaluation.skipInvalid = true;
    const std::string good = "<Signature guid='A' name='a'><Match><File path='/a'/></Match></Signature>\n";
    const std::string bad =
        "<Signature guid='B' name='b'><Match><Future x='1'/><File/></Match></Signature>\n";
    const SignatureFile file =
        read("<Signatures>\n" + good + bad + "<Novelty/>" + good + "</Signatures>", settings);
    EXPECT_EQ(joined(file.problems), "");
    EXPECT_EQ(file.signatures.size(), 2U);
    ASSERT_EQ(file.events.size(), 2U);
    EXPECT_EQ(file.events[0].code, EventCode::Unsupported);
    EXPECT_EQ(file.events[0].guid, "B");
    EXPECT_NE(file.events[0].text.find("sig.xml:3:37: unknown or misplaced element \"Future\""),
              std::string::npos)
        << file.events[0].text;
    EXPECT_EQ(file.events[1].guid, "");

    const SignatureFile illFormed = read("<Signatures>\n" + bad + good, settings);
    EXPECT_EQ(illFormed.problems.size(), 1U);
    EXPECT_TRUE(illFormed.signatures.empty());
}

TEST(SignatureReader, KeepsMetadataAsItIsInAscii) {
    const std::pair<std::string, const char*> cases[] = {
        {"<Metadata/>", ""},
        {"<Metadata> a <b c='1&#10;\"'> </b>\n<d/></Metadata>", " a <b c=\"1&#10;&quot;\"> </b>\n<d/>"},
        {"<Metadata><a>${x} &lt;\xE2\x82\xAC</a><!-- gone --></Metadata>", "<a>${x} &lt;&#8364;</a>"},
        {"<Metadata><![CDATA[<&]]></Metadata>", "&lt;&amp;"},
        {"<Metadata><Metadata> x</Metadata> </Metadata>", "<Metadata> x</Metadata> "},
    };
    for (const auto& [metadata, kept] : cases) {
        const SignatureFile file = read(whole(metadata + " <Match><File path='/x'/></Match>"));
        ASSERT_EQ(joined(file.problems), "") << metadata;
        EXPECT_EQ(file.signatures.at(0).metadata, kept);
    }
}

TEST(SignatureReader, ReadsOneByteForEachCharacterWithAnEventWhenItIsNotUtf8) {
    const SignatureFile latin =
        read("<?xml version='1.0' encoding='UTF-8'?>" + match("<Package name='M\xFC'/>"));
    ASSERT_EQ(joined(latin.problems), "");
    ASSERT_EQ(latin.events.size(), 1U);
    EXPECT_EQ(latin.events.front().code, EventCode::Encoding);
    EXPECT_EQ(valueOf(latin.signatures.at(0).leaves.at(0), Attribute::Name), "M\xC3\xBC");
    const SignatureFile utf8 = read(match("<Package name='M\xC3\xBC'/>"));
    EXPECT_TRUE(utf8.events.empty());
    EXPECT_EQ(valueOf(utf8.signatures.at(0).leaves.at(0), Attribute::Name), "M\xC3\xBC");
}

TEST(SignatureReader, HoldsTheBounds) {
    std::string conditions;
    for (int i = 0; i < 199; ++i) conditions += "<File path='/x'/>";
    EXPECT_EQ(joined(read(match("<All>" + conditions + "</All>")).problems), "");
    EXPECT_NE(
        joined(read(match("<All>" + conditions + "<File path='/x'/></All>")).problems).find("200 conditions"),
        std::string::npos);

    const auto nested = [](std::size_t levels) {
        std::string text;
        for (std::size_t i = 0; i < levels; ++i) text += "<Not>";
        text += "<File path='/x'/>";
        for (std::size_t i = 0; i < levels; ++i) text += "</Not>";
        return match(text);
    };
    EXPECT_EQ(joined(read(nested(60)).problems), "");
    EXPECT_NE(joined(read(nested(61)).problems).find("deeper than 64"), std::string::npos);

    std::string groups;
    for (int i = 0; i < 32; ++i) groups += "(a)";
    EXPECT_EQ(joined(read(match("<Content path='/x' regex='" + groups + "'/>")).problems), "");
    EXPECT_NE(joined(read(match("<Content path='/x' regex='" + groups + "(a)'/>")).problems), "");
}

TEST(SignatureReader, RefusesMoreThanAHundredThousandSignatures) {
    const std::string one = "<Signature guid='A' name='a'><Match><File path='/a'/></Match></Signature>\n";
    std::string text = "<Signatures>";
    for (int i = 0; i < 100'000; ++i) text += one;
    EXPECT_EQ(read(text + "</Signatures>").signatures.size(), 100'000U);
    EXPECT_NE(joined(read(text + one + "</Signatures>").problems).find("100000"), std::string::npos);
}

TEST(SignatureReader, RefusesAFileThatIsMissingOrTooLarge) {
    const zavtest::ScratchDir dir;
    const std::string missing = (dir.path() / "missing.xml").string();
    EXPECT_EQ(joined(readSignatureFile(missing, {}).problems), missing + ": No such file or directory\n");
    EXPECT_EQ(readSignatureFile(dir.path().string(), {}).problems.size(), 1U);
    const std::string large = dir.write("large.xml", "<Signatures/>").string();
    std::filesystem::resize_file(large, (std::uintmax_t{64} << 20) + 1);
    EXPECT_EQ(joined(readSignatureFile(large, {}).problems), large + ": larger than 64 MiB\n");
}

TEST(SignatureReader, WarnsOfWhatIsHardlyMeant) {
    const std::pair<std::string, const char*> cases[] = {
        {match("<Elf path='/x' regex='[0-9]+\\.[0-9]+'/>"), "sig.xml:2:37: the regex names no product"},
        {match("<Elf path='/x' regex='v?(\\d+)'/>"), ""},
        {match("<Elf path='/x' regex='([0-9]+\\.)+'/>"), "names no product"},
        {match("<Elf path='/x' regex='^[0-9]+$'/>"), ""},
        {match("<Content path='/x' regex='[0-9]+'/>"), ""},
        {match("<File path='${f.path}'/>"), "\"f.path\""},
        {match("<File path='${f}'/>"), ""},
        {match("<All><File id='f' path='/x'/><File path='/y' size='${f.sizes}'/></All>"), "\"f.sizes\""},
        {match("<All><File id='f' path='/x'/><File path='/y' size='${f.size}'/></All>"), ""},
        {match("<File path='/${quorvis.arch}'/>"), ""},
        {match("<File path='/${quorvis.nonsense}'/>"), "\"quorvis.nonsense\""},
        {whole("<Preset name='a.b'/><Match><File path='/${a.b}'/></Match>"), ""},
    };
    for (const auto& [text, warning] : cases) {
        const SignatureFile file = read(text);
        EXPECT_EQ(joined(file.problems), "") << text;
        EXPECT_EQ(file.warnings.size(), *warning == '\0' ? 0U : 1U) << text;
        EXPECT_NE(joined(file.warnings).find(warning), std::string::npos) << joined(file.warnings);
    }
}

TEST(SignatureReader, SearchesTheWholeTreeWhenItIsAllowed) {
    Settings settings;
    settings.fileSystem.wholeTree = true;
    EXPECT_EQ(joined(read(match("<Glob pattern='/**/x'/>"), settings).problems), "");
}
