#include "cli/capture/RecordedFiles.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "cli/capture/Archive.h"
#include "cli/system/Failure.h"

namespace zavcli {
namespace {

std::string padded(std::string text) {
    text.append((4 - text.size() % 4) % 4, '\0');
    return text;
}

std::string entry(const std::string& path, unsigned mode, const std::string& content) {
    const std::string header =
        fmt::format("070701{:08X}{:08X}{:08X}{:08X}{:08X}{:08X}{:08X}{:08X}{:08X}{:08X}{:08X}{:08X}{:08X}", 1,
                    mode, 5, 6, 1, 1700000000, content.size(), 0, 0, 0, 0, path.size() + 1, 0);
    return padded(header + path + '\0') + padded(content);
}

constexpr unsigned kFile = 0100000;
constexpr unsigned kDirectory = 0040000;
constexpr unsigned kLink = 0120000;

RecordedFiles parse(const std::string& entries) {
    return parseRecord(entries + entry("TRAILER!!!", 0, ""));
}

std::string refusal(const std::string& record) {
    try {
        parseRecord(record);
    } catch (const Failure& failure) {
        EXPECT_EQ(kExitFailed, failure.status());
        return failure.what();
    }
    return "not refused";
}

TEST(RecordedFiles, FilesDirectoriesAndLinksAreRead) {
    const RecordedFiles files =
        parse(entry("etc", kDirectory | 0755, "") + entry("etc/hostname", kFile | 0644, "pc\n") +
              entry("bin", kLink | 0777, "usr/bin"));
    ASSERT_EQ(3U, files.size());
    EXPECT_EQ(RecordedFile::Kind::Directory, files.at("etc").kind);
    EXPECT_EQ("pc\n", files.at("etc/hostname").content);
    EXPECT_EQ(0644U, files.at("etc/hostname").permissions);
    EXPECT_EQ(5U, files.at("etc/hostname").user);
    EXPECT_EQ(6U, files.at("etc/hostname").group);
    EXPECT_EQ(1700000000U, files.at("etc/hostname").time);
    EXPECT_EQ(RecordedFile::Kind::Link, files.at("bin").kind);
    EXPECT_EQ("usr/bin", files.at("bin").content);
}

TEST(RecordedFiles, TheLargestContentCountsInAnyOrder) {
    const std::string name = entry("f", kFile | 0444, "");
    const std::string content = entry("f", kFile | 0444, "long");
    const std::string shorter = entry("f", kFile | 0444, "s");
    EXPECT_EQ("long", parse(name + content + shorter).at("f").content);
    EXPECT_EQ("long", parse(shorter + content + name).at("f").content);
}

TEST(RecordedFiles, AFileThatCouldNotBeReadStaysSo) {
    const std::string denied = entry("f", kFile, "");
    const std::string name = entry("f", kFile | 0400, "");
    EXPECT_EQ(0U, parse(denied + name).at("f").permissions);
    EXPECT_EQ(0U, parse(name + denied).at("f").permissions);
}

TEST(RecordedFiles, NothingLiesBelowALink) {
    const RecordedFiles files = parse(entry("a", kLink | 0777, "/etc") + entry("a/b", kFile | 0644, "x"));
    EXPECT_EQ(1U, files.size());
}

TEST(RecordedFiles, DamagedRecordsAreRefused) {
    const std::string whole = entry("f", kFile | 0644, "content") + entry("TRAILER!!!", 0, "");
    ASSERT_EQ("not refused", refusal(whole));
    for (std::size_t size = 0; size < whole.size(); ++size)
        EXPECT_NE("not refused", refusal(whole.substr(0, size))) << size;
    EXPECT_NE("not refused", refusal("x" + whole));
    std::string number = whole;
    number[10] = 'z';
    EXPECT_NE("not refused", refusal(number));
}

TEST(RecordedFiles, PathsThatLeadElsewhereAreRefused) {
    for (const char* const path : {"../f", "a/../f", "/f", "a//f", "a/", "."})
        EXPECT_NE("not refused", refusal(entry(path, kFile | 0644, "x") + entry("TRAILER!!!", 0, "")))
            << path;
}

TEST(RecordedFiles, DevicesAreRefused) {
    EXPECT_NE("not refused", refusal(entry("sda", 0060000, "") + entry("TRAILER!!!", 0, "")));
}

TEST(Archive, TheNameDecidesAboutTheCompression) {
    EXPECT_EQ(Compression::Zstd, compressionOf("a.tar.zst"));
    EXPECT_EQ(Compression::Gzip, compressionOf("A.TAR.GZ"));
    EXPECT_EQ(Compression::Gzip, compressionOf("a.tgz"));
    EXPECT_EQ(Compression::None, compressionOf("a.tar"));
    for (const char* const name : {"a", "a.zip", "tar", "a.gz", "a.tar.xz"})
        EXPECT_EQ(std::nullopt, compressionOf(name)) << name;
}

TEST(Archive, ItIsCompressedAsTold) {
    const RecordedFiles files = parse(entry("f", kFile | 0644, "content"));
    EXPECT_EQ(0U, archiveOf(files, Compression::Zstd).find("\x28\xb5\x2f\xfd"));
    EXPECT_EQ(0U, archiveOf(files, Compression::Gzip).find("\x1f\x8b"));
    const std::string plain = archiveOf(files, Compression::None);
    EXPECT_EQ("ustar", plain.substr(257, 5));
    EXPECT_NE(std::string::npos, plain.find("content"));
}

}  // namespace
}  // namespace zavcli
