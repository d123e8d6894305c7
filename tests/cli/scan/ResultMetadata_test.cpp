#include "cli/scan/ResultMetadata.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

TEST(ResultMetadata, TextsAndEvidenceAreRead) {
    const Metadata metadata = readMetadata(
        "<Metadata>\n  <Publisher>\n    A &amp; B\n  </Publisher>\n  <Links><Link>x</Link></Links>\n"
        "  <Publisher>C</Publisher><Empty/>\n"
        "  <Evidence kind=\"package\" source=\"/db\" name=\"bash\" version=\"5\"/><Evidence kind=\"file\"/>\n"
        "</Metadata>");
    ASSERT_EQ(1U, metadata.texts.size());
    EXPECT_EQ("A & B", valueOf(metadata.texts, "Publisher"));
    EXPECT_EQ("", valueOf(metadata.texts, "Links"));
    EXPECT_EQ(2U, metadata.evidence.size());
    EXPECT_EQ("package bash 5 (/db)", metadata.evidenceText());
}

TEST(ResultMetadata, NameComesBeforeTitle) {
    EXPECT_EQ("N", readMetadata("<Metadata><Title>T</Title><Name>N</Name></Metadata>").name());
    EXPECT_EQ("T", readMetadata("<Metadata><Title>T</Title></Metadata>").name());
    EXPECT_EQ("", readMetadata("<Metadata/>").name());
}

TEST(ResultMetadata, EvidenceTextDoesNotRepeatAPath) {
    EXPECT_EQ(
        "file /bin/sh",
        readMetadata("<M><Evidence kind=\"file\" source=\"/bin/sh\" name=\"/bin/sh\"/></M>").evidenceText());
    EXPECT_EQ("file (/bin/sh)",
              readMetadata("<M><Evidence kind=\"file\" source=\"/bin/sh\"/></M>").evidenceText());
    EXPECT_EQ("", readMetadata("<M/>").evidenceText());
}

TEST(ResultMetadata, MalformedMetadataIsEmpty) {
    for (const char* xml : {"", "<Metadata>", "<Metadata><Name>x</Metadata>", "text"}) {
        EXPECT_TRUE(readMetadata(xml).texts.empty()) << xml;
        EXPECT_EQ("", readMetadata(xml).name()) << xml;
    }
}

}  // namespace
}  // namespace zavcli
