#include <gtest/gtest.h>

#include <filesystem>

#include "tests/toolkit/quorvis/ArchiveBuilder.h"
#include "tests/toolkit/quorvis/LeafTester.h"
#include "tests/toolkit/quorvis/WindowsProgramBuilder.h"

namespace toolkit::quorvis {
namespace {

constexpr char kManifest[] =
    "Manifest-Version: 1.0\r\n"
    "Implementation-Title: A library with a long \r\n"
    " name\r\n"
    "Implementation-Version: 1.2.3\r\n"
    "Implementation-Vendor: Example\r\n"
    "\r\n"
    "Name: org/example/\r\n"
    "Implementation-Version: 9\r\n";
constexpr char kProperties[] = "META-INF/maven/g/a/pom.properties";

// "name|version|vendor" of the first item
std::string facts(const LeafResult& result) {
    return LeafTester::first(result, "name") + "|" + LeafTester::first(result, "version") + "|" +
           LeafTester::first(result, "vendor");
}

class FileVersionLeaf : public ::testing::Test {
  protected:
    LeafResult ask(const std::string& format, LeafTester::Attributes attributes = {}) {
        attributes.emplace_back(Attribute::Path, "/f");
        attributes.emplace_back(Attribute::Format, format);
        return tester_.ask(LeafKind::FileVersion, std::move(attributes));
    }
    LeafResult askOf(const std::string& content, const std::string& format) {
        tester_.tree.write("f", content);
        return ask(format);
    }
    // Truncates the file to every length.
    void expectNothingWhenCut(const std::string& format) {
        const auto path = tester_.tree.path() / "f";
        for (auto size = std::filesystem::file_size(path); size-- > 0;) {
            std::filesystem::resize_file(path, size);
            EXPECT_TRUE(ask(format).items.empty()) << size;
        }
    }
    // Replaces each byte.
    void expectNoHarmWhenDamaged(std::string content, const std::string& format) {
        for (std::size_t at = 0; at < content.size(); ++at) {
            const char before = std::exchange(content[at], '\xff');
            std::filesystem::remove(tester_.tree.path() / "f");
            const LeafResult result = askOf(content, format);
            EXPECT_TRUE(result.items.size() <= 1) << at;
            content[at] = before;
        }
        EXPECT_EQ(1U, askOf(content, format).items.size());
    }

    LeafTester tester_;
};

TEST_F(FileVersionLeaf, AnArchiveHasAManifest) {
    for (const bool deflated : {false, true}) {
        ArchiveBuilder archive;
        archive.add("org/example/A.class", "class");
        archive.add("META-INF/MANIFEST.MF", kManifest, deflated);
        const LeafResult result = askOf(archive.build(), "jar");
        EXPECT_EQ("A library with a long name|1.2.3|Example", facts(result));
        EXPECT_EQ("/f", result.items.at(0).source);
        EXPECT_TRUE(result.events.empty());
    }
}

TEST_F(FileVersionLeaf, AManifestMayDescribeABundle) {
    ArchiveBuilder archive;
    archive.add("META-INF/MANIFEST.MF",
                "Bundle-Name: %name\nBundle-SymbolicName: org.example.core;singleton:=true\n"
                "Bundle-Version: 2.0.0.v2024\nBundle-Vendor: Example\n");
    EXPECT_EQ("org.example.core|2.0.0.v2024|Example", facts(askOf(archive.build(), "jar")));
}

TEST_F(FileVersionLeaf, MavenPropertiesAreUsedIfTheManifestHasNoVersion) {
    ArchiveBuilder archive;
    archive.add("META-INF/MANIFEST.MF", "Implementation-Vendor: Example\n");
    archive.add(kProperties, "#Created\nversion=4.5\ngroupId=org.example\nartifactId=core\n");
    EXPECT_EQ("core|4.5|Example", facts(askOf(archive.build(), "jar")));
    archive.add("META-INF/maven/g/b/pom.properties", "version=6\n");
    EXPECT_EQ("-|-|-", facts(askOf(archive.build(), "jar"))) << "which of the two is it?";
}

TEST_F(FileVersionLeaf, ArchivesComeInManyShapes) {
    ArchiveBuilder archive;
    archive.add("META-INF/MANIFEST.MF", kManifest);
    EXPECT_EQ(1U, askOf(archive.build(true), "jar").items.size()) << "the records of large ones";
    EXPECT_EQ(1U, askOf(archive.build(false, std::string(65535, 'c')), "jar").items.size()) << "a comment";
    EXPECT_EQ(1U, askOf(archive.build(false, "PK\x05\x06"), "jar").items.size()) << "an odd comment";
    ArchiveBuilder script("#!/bin/sh\nexec java -jar $0\n");
    script.add("META-INF/MANIFEST.MF", kManifest);
    EXPECT_EQ(1U, askOf(script.build(), "jar").items.size()) << "a script in front";
}

TEST_F(FileVersionLeaf, AnArchiveThatUnpacksEndlesslyIsCut) {
    ArchiveBuilder archive;
    archive.add("META-INF/MANIFEST.MF", kManifest + std::string(std::size_t{4} << 20, '\n'));
    EXPECT_EQ("A library with a long name|1.2.3|Example", facts(askOf(archive.build(), "jar")));
}

TEST_F(FileVersionLeaf, ADamagedArchiveIsUnknown) {
    ArchiveBuilder archive;
    archive.add("META-INF/MANIFEST.MF", kManifest);
    const std::string whole = archive.build();
    std::string wrongData = whole;
    wrongData.replace(50, 8, 8, '\xff');
    ArchiveBuilder encrypted;
    encrypted.add("META-INF/MANIFEST.MF", kManifest, true, 1);
    for (const std::string& content : {whole.substr(0, whole.size() - 1), wrongData, encrypted.build()}) {
        const LeafResult result = askOf(content, "jar");
        EXPECT_TRUE(result.items.empty());
        EXPECT_TRUE(result.incomplete);
        EXPECT_EQ(std::vector{EventCode::Parse}, LeafTester::codes(result));
    }
}

TEST_F(FileVersionLeaf, AWindowsProgramHasAVersionResource) {
    for (const bool wide : {false, true}) {
        WindowsProgramBuilder builder;
        builder.wide = wide;
        const LeafResult result = askOf(builder.build(), "pe");
        EXPECT_EQ("Widget|3.1.4|Example \u00a9", facts(result));
        EXPECT_TRUE(result.events.empty());
    }
    WindowsProgramBuilder builder;
    builder.texts = {{"ProductVersion", "5.6"}};
    EXPECT_EQ("-|5.6|-", facts(askOf(builder.build(), "pe")));
    builder.texts = {};
    EXPECT_EQ("-|1.2.3.4|-", facts(askOf(builder.build(), "pe")));
}

TEST_F(FileVersionLeaf, APythonDistributionHasHeaders) {
    EXPECT_EQ("requests|2.31.0|K. R.",
              facts(askOf("Metadata-Version: 2.1\nName: requests\nVersion: 2.31.0\nAuthor: K. R.\n"
                          "\nVersion: 9 is only in the description\n",
                          "python-dist")));
    const LeafResult newer = ask("python-dist", {{Attribute::AtLeast, "2.31.0rc1"}});
    EXPECT_EQ(1U, newer.items.size()) << "a release comes after its candidates";
}

TEST_F(FileVersionLeaf, VersionTestsDecide) {
    tester_.tree.write("f", "Name: x\nVersion: 1.10\n");
    EXPECT_EQ(1U, ask("python-dist", {{Attribute::AtLeast, "1.9"}}).items.size());
    const LeafResult older = ask("python-dist", {{Attribute::Below, "1.10"}});
    EXPECT_TRUE(older.items.empty());
    EXPECT_FALSE(older.incomplete);
}

TEST_F(FileVersionLeaf, FilesOfOtherKindsAreFalse) {
    for (const char* format : {"jar", "pe", "python-dist"}) {
        for (const char* content : {"", "MZ", "text\n", "Version:\n"}) {
            const LeafResult result = askOf(content, format);
            EXPECT_TRUE(result.items.empty()) << format << content;
            EXPECT_FALSE(result.incomplete) << format << content;
        }
    }
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(ask("msi")));
}

TEST_F(FileVersionLeaf, TruncatedFilesGiveNothing) {
    ArchiveBuilder archive;
    archive.add("META-INF/MANIFEST.MF", kManifest);
    archive.add(kProperties, "version=4.5\n", false);
    EXPECT_EQ(1U, askOf(archive.build(), "jar").items.size());
    expectNothingWhenCut("jar");
    EXPECT_EQ(1U, askOf(WindowsProgramBuilder().build(), "pe").items.size());
    expectNothingWhenCut("pe");
}

TEST_F(FileVersionLeaf, DamagedBytesAreHarmless) {
    ArchiveBuilder archive;
    archive.add("META-INF/MANIFEST.MF", kManifest);
    expectNoHarmWhenDamaged(archive.build(), "jar");
    expectNoHarmWhenDamaged(WindowsProgramBuilder().build(), "pe");
}

}  // namespace
}  // namespace toolkit::quorvis
