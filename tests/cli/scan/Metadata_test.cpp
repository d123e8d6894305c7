#include "cli/scan/Metadata.h"

#include <gtest/gtest.h>

#include "cli/scan/Element.h"

namespace zavcli {
namespace {

TEST(Metadata, TextsAndEvidenceAreRead) {
    const Metadata metadata = readMetadata(
        "<Metadata>\n  <Publisher>\n    A &amp; B\n  </Publisher>\n  <Links><Link>x</Link></Links>\n"
        "  <Publisher>C</Publisher><Empty/>\n"
        "  <Evidence kind=\"package\" source=\"/db\" name=\"bash\" version=\"5\"/><Evidence kind=\"file\"/>\n"
        "</Metadata>");
    ASSERT_EQ(1U, metadata.texts.size());
    EXPECT_EQ("A & B", metadata.text("Publisher"));
    EXPECT_EQ("", metadata.text("Links"));
    EXPECT_EQ(2U, metadata.evidence.size());
    EXPECT_EQ("package bash 5 (/db)", metadata.evidenceText());
}

TEST(Metadata, NameComesBeforeTitle) {
    EXPECT_EQ("N", readMetadata("<Metadata><Title>T</Title><Name>N</Name></Metadata>").name());
    EXPECT_EQ("T", readMetadata("<Metadata><Title>T</Title></Metadata>").name());
    EXPECT_EQ("", readMetadata("<Metadata/>").name());
}

TEST(Metadata, EvidenceNamesAFileOnce) {
    EXPECT_EQ(
        "file /bin/sh",
        readMetadata("<M><Evidence kind=\"file\" source=\"/bin/sh\" name=\"/bin/sh\"/></M>").evidenceText());
    EXPECT_EQ("file (/bin/sh)",
              readMetadata("<M><Evidence kind=\"file\" source=\"/bin/sh\"/></M>").evidenceText());
    EXPECT_EQ("", readMetadata("<M/>").evidenceText());
}

TEST(Metadata, WhatIsNotWellFormedIsEmpty) {
    for (const char* xml : {"", "<Metadata>", "<Metadata><Name>x</Metadata>", "text"}) {
        EXPECT_TRUE(readMetadata(xml).texts.empty()) << xml;
        EXPECT_EQ("", readMetadata(xml).name()) << xml;
    }
}

TEST(Element, DeepNestingIsRefused) {
    const auto nested = [](int depth) {
        std::string xml;
        for (int i = 0; i < depth; ++i) xml += "<a>";
        for (int i = 0; i < depth; ++i) xml += "</a>";
        return xml;
    };
    EXPECT_TRUE(readElement(nested(100)));
    EXPECT_FALSE(readElement(nested(101)));
    EXPECT_FALSE(readElement(nested(1'000'000)));
}

}  // namespace
}  // namespace zavcli
