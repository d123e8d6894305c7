#include <gtest/gtest.h>

#include <filesystem>

#include "tests/toolkit/quorvis/SignatureFiles.h"

using quorvistest::joined;
using quorvistest::match;
using quorvistest::read;
using quorvistest::whole;
using toolkit::quorvis::readSignatureFile;
using toolkit::quorvis::SignatureFile;

TEST(SignatureProblems, ReportsPlaceAndReason) {
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
        {"<Signatures><Signature guid='G' name='' oncePer='file'><Match><File "
         "path='/x'/></Match></Signature></Signatures>",
         "oncePer \"file\" is not installation"},
        {whole(""), "neither Each nor Match"},
        {whole("<Metadata a='1'/><Match><File path='/x'/></Match>"), "unknown attribute \"a\" of Metadata"},
        {whole("<Metadata><\xC3\xA9/></Metadata><Match><File path='/x'/></Match>"),
         "a name that is not ASCII"},
        {whole("<Match><File path='/x'/></Match><Preset name='a'/>"), "misplaced element \"Preset\""},
        {whole("<Match><File path='/x'/></Match><Match><File path='/x'/></Match>"), "\"Match\" in Signature"},
        {whole("<Preset/><Match><File path='/x'/></Match>"), "Preset lacks the attribute \"name\""},
        {whole("<Preset name='a'/><Preset name='a'/><Match><File path='/x'/></Match>"),
         "\"a\" is declared twice"},
        {whole("<Preset name='quorvis.x'/><Match><File path='/x'/></Match>"), "belongs to the scanner"},
        {whole("<Each><File path='/x'/></Each>"), "File lacks the attribute \"id\""},
        {whole("<Each><File id='a' path='/x'/><File path='${a.path}'/></Each>"),
         "sig.xml:2:60: File lacks the attribute \"id\""},
        {whole("<Each><File id='a' path='/x'/><File id='a' path='${a.path}'/></Each>"),
         "id \"a\" is used twice"},
        {whole("<Each><File id='a' path='/x'/><File id='b' path='/x'/><File id='c' path='/x'/>"
               "<File id='d' path='/x'/><File id='e' path='/x'/></Each>"),
         "Each has more than 4 leaves"},
        {whole("<Each><File id='a' path='/x'/><Compare id='b' left='1' equals='1'/></Each>"),
         "\"Compare\" in Each"},
        {whole("<Each><Compare id='a' left='1' equals='1'/></Each>"), "\"Compare\" in Each"},
        {whole("<Each/>"), "Each has no leaf"},
        {whole("<Match><File path='/x'/></Match><Output><Variable name='a'/></Output>"),
         "Variable lacks the attribute \"value\""},
        {whole("<Match><File path='/x'/></Match><Output><Variable name='a' value='${'/></Output>"),
         "not closed"},
        {whole("<Match><File path='/x'/></Match><Output><Variable name='a' value='1'/><Variable name='a' "
               "value='2'/></Output>"),
         "\"a\" is declared twice"},
        // identities
        {whole("<Metadata><Cpe>cpe:2.3:a:f5:nginx:${v}</Cpe></Metadata><Match><File path='/x'/></Match>"),
         "sig.xml:2:40: Cpe \"cpe:2.3:a:f5:nginx:${v}\" has 4 components"},
        {whole("<Metadata><Purl>nginx</Purl></Metadata><Match><File path='/x'/></Match>"),
         "Purl \"nginx\" does not start with \"pkg:\""},
        {whole("<Metadata><Cpe>${</Cpe></Metadata><Match><File path='/x'/></Match>"), "not closed"},
        {whole("<Metadata><Cpe><b/></Cpe></Metadata><Match><File path='/x'/></Match>"),
         "does not start with"},
        // captures
        {match("<File path='/x'><Capture group='1' name='n'/></File>"), "Capture lacks the attribute \"of\""},
        {match("<File path='/x'><Capture of='name' group='1' name='n'/></File>"),
         "sig.xml:2:53: Capture lacks the attribute \"regex\""},
        {match("<Content path='/x' regex='(a)'><Capture regex='a' group='1' name='n'/></Content>"),
         "Capture lacks the attribute \"of\""},
        {match("<File path='/x'><Capture of='version' regex='a' group='0' name='n'/></File>"),
         "File has no value \"version\" here"},
        {match("<File path='/x'><Capture of='package' regex='a' group='0' name='n'/></File>"),
         "File has no value \"package\" here"},
        {match("<File path='/x'><Capture of='name' regex='a' group='1' name='n'/></File>"),
         "regex has no group 1"},
        {match("<File path='/x'><Capture of='name' regex='(a' group='1' name='n'/></File>"), "regex \"(a\""},
        {match("<File path='/x'><Capture of='name' regex='${a}' group='0' name='n'/></File>"),
         "the expression of a value cannot have variables"},
        {match("<File path='/x'><Capture of='name' regex='a' group='0' name='size'/></File>"),
         "name \"size\" is already that of a value of every File"},
        {match("<Compare left='1' equals='1'><Capture of='left' regex='a' group='0' name='n'/></Compare>"),
         "\"Capture\" in Compare"},
        // detections
        {whole("<Detection/>"), "sig.xml:2:30: Detection has neither Each nor Match"},
        {whole("<Detection a='1'><Match><File path='/x'/></Match></Detection>"),
         "unknown attribute \"a\" of Detection"},
        {whole(
             "<Detection><Match><File path='/x'/></Match><Each><File id='a' path='/x'/></Each></Detection>"),
         "misplaced element \"Each\" in Detection"},
        {whole("<Detection><Metadata/><Match><File path='/x'/></Match></Detection>"),
         "misplaced element \"Metadata\" in Detection"},
        {whole("<Match><File path='/x'/></Match><Detection><Match><File path='/x'/></Match></Detection>"),
         "sig.xml:2:62: Detection stands beside Each, Match or Output"},
        {whole("<Detection><Match><File path='/x'/></Match></Detection><Match><File path='/x'/></Match>"),
         "misplaced element \"Match\" in Signature"},
        {whole("<Detection><Match><All><File id='a' path='/x'/><File id='a' "
               "path='/y'/></All></Match></Detection>"),
         "id \"a\" is used twice"},
        // conditions
        {match(""), "Match has no condition"},
        {match("<All/>"), "All has no condition"},
        {match("<Not><File path='/x'/><File path='/y'/></Not>"), "Not has more than one condition"},
        {match("<File path='/x'/><File path='/y'/>"), "Match has more than one condition"},
        {match("<All>x<File path='/x'/></All>"), "text \"x\" in All"},
        {match("<All id='a'><File path='/x'/></All>"), "unknown attribute \"id\" of All"},
        {match("<Exec path='/x'/>"), "element \"Exec\" in Match"},
        {match("<All><File id='a' path='/x'/><File id='a' path='/y'/></All>"), "id \"a\" is used twice"},
        {match("<Any><All><File id='a' path='/x'/><File id='a' path='/y'/></All><File path='/z'/></Any>"),
         "id \"a\" is used twice"},
        {match("<All><File id='a' path='/x'/><Any><File id='a' path='/y'/><File path='/z'/></Any></All>"),
         "id \"a\" is used twice"},
        {match("<All><Any><File id='a' path='/y'/><File path='/z'/></Any><File id='a' path='/x'/></All>"),
         "id \"a\" is used twice"},
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
        {match("<Glob pattern='/{*,a}*/x'/>"), "no directory of a fixed name"},
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
        {match("<Component path='/x' format='cobol'/>"), "format \"cobol\" is not "},
        {match("<Component path='/x' format='go' role='friend'/>"),
         "role \"friend\" is not main, dependency, build, toolchain or setting"},
        {match("<Component path='/x'/>"), "format"},
        {match("<Property path='/x' format='csv' key='k'/>"), "format \"csv\""},
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

TEST(SignatureProblems, ReportsAllProblemsInDocumentOrder) {
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
              "sig.xml:5:9: type \"x\" is not dpkg, rpm, apk, pacman, snap, flatpak, opkg, portage, homebrew "
              "or any\n");
    EXPECT_TRUE(file.signatures.empty());
}

TEST(SignatureProblems, ColumnsCountCharacters) {
    EXPECT_TRUE(read("<Signatures><!-- \xC3\xA9\xE2\x82\xAC --><x/></Signatures>")
                    .problems.at(0)
                    .starts_with("sig.xml:1:24: "));
    EXPECT_TRUE(
        read("<Signatures><!-- \xE9\xA4 --><x/></Signatures>").problems.at(0).starts_with("sig.xml:1:24: "));
}

TEST(SignatureProblems, EnforcesLimits) {
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

    const auto named = [](std::size_t length) {
        return match("<Package name='" + std::string(length, 'a') + "'/>");
    };
    EXPECT_EQ(joined(read(named(std::size_t{3} << 20)).problems), "");
    EXPECT_NE(joined(read(named(std::size_t{5} << 20)).problems).find("longer than 4 MiB"),
              std::string::npos);

    std::string groups;
    for (int i = 0; i < 32; ++i) groups += "(a)";
    EXPECT_EQ(joined(read(match("<Content path='/x' regex='" + groups + "'/>")).problems), "");
    EXPECT_NE(joined(read(match("<Content path='/x' regex='" + groups + "(a)'/>")).problems), "");
}

TEST(SignatureProblems, RefusesMoreThan100000Signatures) {
    const std::string one = "<Signature guid='A' name='a'><Match><File path='/a'/></Match></Signature>\n";
    std::string text = "<Signatures>";
    for (int i = 0; i < 100'000; ++i) text += one;
    EXPECT_EQ(read(text + "</Signatures>").signatures.size(), 100'000U);
    EXPECT_NE(joined(read(text + one + "</Signatures>").problems).find("100000"), std::string::npos);
}

TEST(SignatureProblems, RefusesMissingAndTooLargeFiles) {
    const zavtest::ScratchDir dir;
    const std::string missing = (dir.path() / "missing.xml").string();
    EXPECT_EQ(joined(readSignatureFile(missing, {}).problems), missing + ": No such file or directory\n");
    EXPECT_EQ(readSignatureFile(dir.path().string(), {}).problems.size(), 1U);
    const std::string large = dir.write("large.xml", "<Signatures/>").string();
    std::filesystem::resize_file(large, (std::uintmax_t{64} << 20) + 1);
    EXPECT_EQ(joined(readSignatureFile(large, {}).problems), large + ": larger than 64 MiB\n");
}

TEST(SignatureProblems, WarnsOfProbableMistakes) {
    const std::pair<std::string, const char*> cases[] = {
        {match("<Elf path='/x' regex='[0-9]+\\.[0-9]+'/>"),
         "sig.xml:2:37: the regex does not name a product"},
        {match("<Elf path='/x' regex='v?(\\d+)'/>"), ""},
        {match("<Elf path='/x' regex='([0-9]+\\.)+'/>"), "does not name a product"},
        {match("<Elf path='/x' regex='^[0-9]+$'/>"), ""},
        {match("<Elf path='/x' regex='[0-9]+\\.[0-9]+' max='1'/>"), ""},
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
