#include "toolkit/quorvis/language/SignatureReader.h"

#include <gtest/gtest.h>

#include "tests/toolkit/quorvis/SignatureFiles.h"

using quorvistest::joined;
using quorvistest::match;
using quorvistest::read;
using quorvistest::whole;
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
    ASSERT_EQ(signature.detections.size(), 1U);
    const auto& detection = signature.detections.front();
    EXPECT_TRUE(detection.each.empty());
    ASSERT_TRUE(detection.match.has_value());
    EXPECT_EQ(detection.match->kind, Condition::Kind::All);
    ASSERT_EQ(detection.match->children.size(), 2U);
    EXPECT_EQ(detection.match->children[1].leaf, 1U);
    ASSERT_EQ(signature.leaves.size(), 2U);
    EXPECT_EQ(signature.leaves[0].kind, LeafKind::Package);
    EXPECT_EQ(signature.leaves[0].id, "p");
    EXPECT_EQ(signature.leaves[0].min, 1U);
    EXPECT_EQ(signature.leaves[0].line, 5U);
    EXPECT_EQ(valueOf(signature.leaves[1], Attribute::Path), "/bin/bash");
    ASSERT_EQ(detection.output.size(), 1U);
    EXPECT_EQ(detection.output[0].name, "version");
    EXPECT_EQ(detection.output[0].value.pieces().at(0).text, "p.version");
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
    EXPECT_EQ(readExample("java").signatures[0].detections.front().each, std::vector<std::size_t>{0});
}

TEST(SignatureReader, AcceptsEveryFormOfTheLanguage) {
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

TEST(SignatureReader, SkipsInvalidSignaturesIfConfigured) {
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

TEST(SignatureReader, KeepsMetadataAsAscii) {
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

TEST(SignatureReader, ReadsInvalidUtf8AsLatin1WithAnEvent) {
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

TEST(SignatureReader, NamesTheUnsupportedEncodingOrVersion) {
    const std::string good = match("<Package name='x'/>");
    const auto wide = [&](std::size_t unit, bool bigEndian, std::string bytes) {
        for (const char byte : good) {
            std::string character(unit, '\0');
            (bigEndian ? character.back() : character.front()) = byte;
            bytes += character;
        }
        return bytes;
    };
    const std::pair<std::string, const char*> cases[] = {
        {wide(2, false, ""), "in UTF-16, UTF-8 is expected"},
        {wide(2, true, ""), "in UTF-16, UTF-8 is expected"},
        {wide(2, false, "\xFF\xFE"), "in UTF-16, UTF-8 is expected"},
        {wide(2, true, "\xFE\xFF"), "in UTF-16, UTF-8 is expected"},
        {wide(4, false, ""), "in UTF-32, UTF-8 is expected"},
        {"<?xml version='1.0' encoding='windows-1251'?>" + good,
         "encoding \"windows-1251\" is not supported, UTF-8 is expected"},
        {"<?xml version='1.0' encoding='windows-1251'?>" + match("<Package name='\xCF'/>"),
         "encoding \"windows-1251\" is not supported, UTF-8 is expected"},
        {"<?xml version='2.0'?>" + good, "XML version \"2.0\" is not supported"},
    };
    for (const auto& [text, problem] : cases) {
        const SignatureFile file = read(text);
        EXPECT_TRUE(file.signatures.empty());
        EXPECT_NE(joined(file.problems).find(problem), std::string::npos) << joined(file.problems);
    }
    for (const char* const encoding : {"utf-8", "ISO-8859-1", "US-ASCII"}) {
        const SignatureFile file =
            read("<?xml version='1.0' encoding='" + std::string(encoding) + "'?>" + good);
        EXPECT_EQ(joined(file.problems), "") << encoding;
    }
}

TEST(SignatureReader, AllowsSearchesOfTheWholeTreeIfConfigured) {
    Settings settings;
    settings.fileSystem.wholeTree = true;
    EXPECT_EQ(joined(read(match("<Glob pattern='/**/x'/>"), settings).problems), "");
}
