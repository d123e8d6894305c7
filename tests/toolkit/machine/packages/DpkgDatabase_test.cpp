#include "toolkit/machine/packages/DpkgDatabase.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace toolkit {
namespace {

constexpr char kBash[] =
    "Package: bash\n"
    "Essential: yes\n"
    "Status: install ok installed\n"
    "Section: shells\n"
    "Installed-Size: 7164\n"
    "Maintainer: Matthias Klose <doko@debian.org>\n"
    "Architecture: amd64\n"
    "Multi-Arch: foreign\n"
    "Version: 5.2.15-2+b8\n"
    "Source: bash (5.2.15-2)\n"
    "Conffiles:\n"
    " /etc/bash.bashrc 89269e1298235f1b12b4c16e4065ad0d\n"
    " /etc/skel/.profile f4e81ade7d6f9fb342541152d08e7a97\n"
    "Description: GNU Bourne Again SHell\n"
    " Version: not a field, for the line is indented\n"
    "\t.\n"
    "Homepage: http://tiswww.case.edu/php/chet/bash/bashtop.html\n";

std::vector<DpkgStanza> readAll(std::string_view text) {
    std::vector<DpkgStanza> stanzas;
    DpkgStatusParser status(text);
    DpkgStanza stanza;
    while (status.next(stanza)) stanzas.push_back(stanza);
    return stanzas;
}

void expectBash(const DpkgStanza& stanza) {
    EXPECT_EQ("bash", stanza.package);
    EXPECT_EQ("install ok installed", stanza.status);
    EXPECT_EQ("5.2.15-2+b8", stanza.version);
    EXPECT_EQ("amd64", stanza.architecture);
    EXPECT_EQ("foreign", stanza.multiArch);
    EXPECT_EQ("Matthias Klose <doko@debian.org>", stanza.maintainer);
    EXPECT_EQ("GNU Bourne Again SHell", stanza.description);
    EXPECT_EQ("bash", stanza.source);
    EXPECT_EQ("shells", stanza.section);
    EXPECT_EQ("7164", stanza.installedSize);
}

TEST(DpkgStatusParser, AStanzaGivesItsFields) {
    const std::vector<DpkgStanza> stanzas = readAll(kBash);
    ASSERT_EQ(1U, stanzas.size());
    expectBash(stanzas[0]);
}

TEST(DpkgStatusParser, CarriageReturnsAreNotPartOfValues) {
    std::string text;
    for (const char c : std::string_view(kBash)) text += c == '\n' ? std::string("\r\n") : std::string(1, c);
    const std::string twice = text + "\r\n" + text;
    const std::vector<DpkgStanza> stanzas = readAll(twice);
    ASSERT_EQ(2U, stanzas.size());
    expectBash(stanzas[0]);
    expectBash(stanzas[1]);
}

TEST(DpkgStatusParser, TheLastStanzaMayLackItsLineEnd) {
    const std::vector<DpkgStanza> stanzas = readAll("Package: a\nVersion: 1\n\nPackage: b\nVersion: 2");
    ASSERT_EQ(2U, stanzas.size());
    EXPECT_EQ("b", stanzas[1].package);
    EXPECT_EQ("2", stanzas[1].version);
}

TEST(DpkgStatusParser, SeveralBlankLinesSeparateStanzasLikeOne) {
    EXPECT_EQ(2U, readAll("\n\nPackage: a\n\n\n\nPackage: b\n\n\n").size());
}

TEST(DpkgStatusParser, AnEmptyFileHasNoStanza) {
    EXPECT_TRUE(readAll("").empty());
    EXPECT_TRUE(readAll("\n\n\n").empty());
}

TEST(DpkgStatusParser, AStanzaWithoutNameIsSkipped) {
    const std::vector<DpkgStanza> stanzas =
        readAll("Version: 9\nArchitecture: mips\n\nPackage: b\nVersion: 2\n\nVersion: 7\n");
    ASSERT_EQ(1U, stanzas.size());
    EXPECT_EQ("b", stanzas[0].package);
    EXPECT_EQ("2", stanzas[0].version);
    EXPECT_EQ("", stanzas[0].architecture);
}

TEST(DpkgStatusParser, TheFirstOfTwoEqualFieldsCounts) {
    const std::vector<DpkgStanza> stanzas = readAll("Package: a\nVersion: 1\nVersion: 2\nPackage: z\n");
    ASSERT_EQ(1U, stanzas.size());
    EXPECT_EQ("a", stanzas[0].package);
    EXPECT_EQ("1", stanzas[0].version);
}

TEST(DpkgStatusParser, FieldNamesAreCaseInsensitive) {
    const std::vector<DpkgStanza> stanzas = readAll("PACKAGE: a\nversion:1\nInstalled-SIZE:\t12 \n");
    ASSERT_EQ(1U, stanzas.size());
    EXPECT_EQ("1", stanzas[0].version);
    EXPECT_EQ("12", stanzas[0].installedSize);
}

TEST(DpkgStatusParser, FieldNamesAreComparedWhole) {
    const std::vector<DpkgStanza> stanzas = readAll(
        "Pack: x\nPackage-Type: udeb\nPackage: a\nSection-Two: x\nSourceless: x\nS: x\n:\n"
        "Source: b (1)\nVersion : 3\nVersion: 4\nMaintainers: x\nMulti-Arch: same\nversioN: 5\n");
    ASSERT_EQ(1U, stanzas.size());
    EXPECT_EQ("a", stanzas[0].package);
    EXPECT_EQ("b", stanzas[0].source);
    EXPECT_EQ("", stanzas[0].section);
    EXPECT_EQ("4", stanzas[0].version);
    EXPECT_EQ("", stanzas[0].maintainer);
    EXPECT_EQ("same", stanzas[0].multiArch);
}

TEST(DpkgStatusParser, LinesWithoutColonAreSkipped) {
    const std::vector<DpkgStanza> stanzas = readAll("Package: a\nVersion\n<<<<<<< mine\nVersion: 3\n");
    ASSERT_EQ(1U, stanzas.size());
    EXPECT_EQ("3", stanzas[0].version);
}

TEST(DpkgStatusParser, InvalidUtf8PassesUnchanged) {
    const std::vector<DpkgStanza> stanzas = readAll("Package: a\nMaintainer: J\xf6rg \xff\xfe\n");
    ASSERT_EQ(1U, stanzas.size());
    EXPECT_EQ("J\xf6rg \xff\xfe", stanzas[0].maintainer);
}

TEST(DpkgStatusParser, AHugeFieldIsReadWhole) {
    const std::string huge(5U << 20, 'x');
    const std::string text = "Package: a\nDescription: " + huge + "\n " + huge + "\nVersion: 1\n";
    const std::vector<DpkgStanza> stanzas = readAll(text);
    ASSERT_EQ(1U, stanzas.size());
    EXPECT_EQ(huge, stanzas[0].description);
    EXPECT_EQ("1", stanzas[0].version);
}

TEST(DpkgStatusParser, TheSamePackageForTwoArchitecturesIsTwoStanzas) {
    const std::vector<DpkgStanza> stanzas =
        readAll("Package: libc6\nArchitecture: amd64\n\nPackage: libc6\nArchitecture: i386\n");
    ASSERT_EQ(2U, stanzas.size());
    EXPECT_EQ("amd64", stanzas[0].architecture);
    EXPECT_EQ("i386", stanzas[1].architecture);
}

// At any truncation, the stanzas before the end are complete, and every other value is a prefix.
TEST(DpkgStatusParser, ATruncatedFileGivesThePackagesBeforeItsEnd) {
    const std::string text = std::string(kBash) + "\n" + kBash;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const std::string cut = text.substr(0, length);
        const std::vector<DpkgStanza> stanzas = readAll(cut);
        const bool firstIsWhole = length >= sizeof kBash - 1;
        ASSERT_LE(stanzas.size(), 2U) << length;
        if (firstIsWhole) {
            ASSERT_FALSE(stanzas.empty()) << length;
            expectBash(stanzas[0]);
        }
        for (const DpkgStanza& stanza : stanzas) {
            EXPECT_EQ(0U, std::string("bash").find(stanza.package)) << length;
            EXPECT_EQ(0U, std::string("5.2.15-2+b8").find(stanza.version)) << length;
        }
    }
}

TEST(DpkgStatusParser, OnlyUsablePackagesAreInstalled) {
    const struct {
        const char* status;
        bool installed;
    } kCases[] = {
        {"install ok installed", true},
        {"hold ok installed", true},
        {"deinstall ok installed", true},
        {"install ok triggers-awaited", true},
        {"install ok triggers-pending", true},
        {"install reinstreq installed", true},
        {"install ok half-installed", false},
        {"install ok unpacked", false},
        {"install ok half-configured", false},
        {"deinstall ok config-files", false},
        {"purge ok not-installed", false},
        {"unknown ok not-installed", false},
        {"installed", false},
        {"", false},
        {"install ok install", false},
        {"install ok installed ", false},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.installed, isInstalled(test.status)) << test.status;
}

TEST(DpkgStatusParser, AVersionHasAnEpochBeforeItsColonAndARevisionBehindItsLastDash) {
    const struct {
        const char* version;
        const char* epoch;
        const char* revision;
    } kCases[] = {
        {"5.2.15-2+b8", "", "2+b8"},
        {"1:2.38.1-5", "1", "5"},
        {"2022-01-1", "", "1"},
        {"3.134", "", ""},
        {"2:1.0", "2", ""},
        {"", "", ""},
        {"1-", "", ""},
        {":1", "", ""},
    };
    for (const auto& test : kCases) {
        const DpkgVersion parts = splitDpkgVersion(test.version);
        EXPECT_EQ(test.epoch, parts.epoch) << test.version;
        EXPECT_EQ(test.revision, parts.revision) << test.version;
    }
}

}  // namespace
}  // namespace toolkit
