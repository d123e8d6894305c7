// The readers of the smaller package formats.
#include <gtest/gtest.h>

#include <string>

#include "toolkit/machine/packages/ApkDatabase.h"
#include "toolkit/machine/packages/PacmanDesc.h"
#include "toolkit/machine/packages/SnapMeta.h"
#include "toolkit/machine/text/KeyFile.h"

namespace toolkit {
namespace {

constexpr char kApk[] =
    "C:Q1p78yvTLG094tHE1+dToJGbmYzQE=\n"
    "P:musl\n"
    "V:1.2.4-r2\n"
    "A:x86_64\n"
    "S:390186\n"
    "I:634880\n"
    "T:the musl c library (libc) implementation\n"
    "U:https://musl.libc.org/\n"
    "L:MIT\n"
    "o:musl\n"
    "m:Timo Ter\xc3\xa4s <timo.teras@iki.fi>\n"
    "F:lib\n"
    "M:0:0:1777\n"
    "R:ld-musl-x86_64.so.1\n"
    "a:0:0:755\n"
    "\n";

TEST(ApkDatabase, APackageGivesItsFields) {
    ApkDatabase database(kApk);
    ApkPackage package;
    ASSERT_TRUE(database.next(package));
    EXPECT_EQ("musl", package.name);
    EXPECT_EQ("1.2.4-r2", package.version);
    EXPECT_EQ("x86_64", package.architecture);
    EXPECT_EQ("Timo Ter\xc3\xa4s <timo.teras@iki.fi>", package.maintainer);
    EXPECT_EQ("the musl c library (libc) implementation", package.description);
    EXPECT_EQ("musl", package.origin);
    EXPECT_EQ("634880", package.installedSize);
    EXPECT_FALSE(database.next(package));
    EXPECT_EQ("", package.name);
}

TEST(ApkDatabase, ParagraphsWithoutNameArePassedOver) {
    ApkDatabase database("V:9\nA:mips\n\n\nP:a\nV:1\n\nV:3\n\nP:b\nV:2");
    ApkPackage package;
    ASSERT_TRUE(database.next(package));
    EXPECT_EQ("a", package.name);
    EXPECT_EQ("", package.architecture);
    ASSERT_TRUE(database.next(package));
    EXPECT_EQ("b", package.name);
    EXPECT_EQ("2", package.version);
    EXPECT_FALSE(database.next(package));
}

TEST(ApkDatabase, AFileCutOffAnywhereGivesAtMostWhatStandsBeforeTheCut) {
    const std::string text = kApk;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const std::string cut = text.substr(0, length);
        ApkDatabase database(cut);
        ApkPackage package;
        int count = 0;
        while (database.next(package)) {
            ++count;
            EXPECT_EQ(0U, std::string("musl").find(package.name)) << length;
            EXPECT_EQ(0U, std::string("1.2.4-r2").find(package.version)) << length;
        }
        EXPECT_EQ(length > text.find("P:m") + 2 ? 1 : 0, count) << length;
    }
}

constexpr char kPacman[] =
    "%NAME%\nzlib\n\n%VERSION%\n1:1.3.1-2\n\n%BASE%\nzlib\n\n%DESC%\nCompression "
    "library\n\n%ARCH%\nx86_64\n\n"
    "%INSTALLDATE%\n1727000000\n\n%PACKAGER%\nA B <a@b.org>\n\n%SIZE%\n357376\n\n%DEPENDS%\nglibc\nbash\n\n";

TEST(PacmanDesc, AFileGivesItsFields) {
    const PacmanPackage package = readPacmanDesc(kPacman);
    EXPECT_EQ("zlib", package.name);
    EXPECT_EQ("1:1.3.1-2", package.version);
    EXPECT_EQ("x86_64", package.architecture);
    EXPECT_EQ("A B <a@b.org>", package.packager);
    EXPECT_EQ("Compression library", package.description);
    EXPECT_EQ("zlib", package.base);
    EXPECT_EQ("1727000000", package.installDate);
    EXPECT_EQ("357376", package.size);
}

TEST(PacmanDesc, TheSecondLineOfAListIsNoHeading) {
    const PacmanPackage package = readPacmanDesc("%GROUPS%\nbase\n%NAME%\nwrong\n\n%NAME%\nright\nsecond\n");
    EXPECT_EQ("right", package.name);
}

TEST(PacmanDesc, HeadingsWithoutValueLeaveTheFieldEmpty) {
    const PacmanPackage package = readPacmanDesc("%NAME%\n\n%VERSION%\r\n2-1\r\n\r\n%DESC%");
    EXPECT_EQ("", package.name);
    EXPECT_EQ("2-1", package.version);
    EXPECT_EQ("", package.description);
}

TEST(SnapMeta, ScalarsOfAllKindsAreRead) {
    const struct {
        const char* text;
        const char* version;
    } kCases[] = {
        {"version: 20230801", "20230801"},
        {"version: '2.63'\n", "2.63"},
        {"version: \"1 \\\"a\\\" 2\"\n", "1 \"a\" 2"},
        {"version: 'it''s'\n", "it's"},
        {"version: 1.2 # note\n", "1.2"},
        {"version: |\n  3.4\n  5\n", "3.4"},
        {"version: >-\n  3.4\n", "3.4"},
        {"version:\r\n", ""},
        {"version: # none\n", ""},
        {"version: 'cut", "cut"},
        {"version: \"", ""},
        {"version: \"\\", "\\"},
        {"version", ""},
        {"  version: 7\n", ""},
        {"apps:\n  version: 7\n", ""},
        {"", ""},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.version, readSnapMeta(test.text).version) << test.text;
}

TEST(SnapMeta, ArchitecturesAreJoinedFromEitherKindOfList) {
    EXPECT_EQ("amd64;i386", readSnapMeta("architectures:\n- amd64\n- i386\nname: x\n").architectures);
    EXPECT_EQ("amd64;i386", readSnapMeta("architectures:\n  - amd64\n  - 'i386'\n").architectures);
    EXPECT_EQ("amd64;i386", readSnapMeta("architectures: [amd64, i386]\n").architectures);
    EXPECT_EQ("amd64", readSnapMeta("architectures: [amd64").architectures);
    EXPECT_EQ("", readSnapMeta("architectures: []\n").architectures);
    EXPECT_EQ("all", readSnapMeta("architectures: all\n").architectures);
}

TEST(SnapMeta, ListsOfOtherKeysAreLeftAlone) {
    const SnapMeta meta = readSnapMeta("name: core\nplugs:\n- name: y\nsummary: runtime\nassumes: [a]\n");
    EXPECT_EQ("core", meta.name);
    EXPECT_EQ("runtime", meta.summary);
    EXPECT_EQ("", meta.architectures);
}

TEST(KeyFile, AValueIsFoundInItsGroupOnly) {
    constexpr char kText[] =
        "# comment\nname=none\n[Runtime]\nname=wrong\n\n[Application]\r\n name = org.x.Y "
        "\r\nname=second\n[Other";
    EXPECT_EQ("org.x.Y", keyFileValue(kText, "Application", "name"));
    EXPECT_EQ("wrong", keyFileValue(kText, "Runtime", "name"));
    EXPECT_EQ("", keyFileValue(kText, "Other", "name"));
    EXPECT_EQ("", keyFileValue(kText, "Application", "nam"));
    EXPECT_EQ("", keyFileValue(kText, "", "name"));
    EXPECT_EQ("", keyFileValue("", "Application", "name"));
}

}  // namespace
}  // namespace toolkit
