#include "toolkit/machine/packages/ApkDatabase.h"

#include <gtest/gtest.h>

#include <string>

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

TEST(ApkParser, APackageGivesItsFields) {
    ApkParser database(kApk);
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

TEST(ApkParser, ParagraphsWithoutNameAreSkipped) {
    ApkParser database("V:9\nA:mips\n\n\nP:a\nV:1\n\nV:3\n\nP:b\nV:2");
    ApkPackage package;
    ASSERT_TRUE(database.next(package));
    EXPECT_EQ("a", package.name);
    EXPECT_EQ("", package.architecture);
    ASSERT_TRUE(database.next(package));
    EXPECT_EQ("b", package.name);
    EXPECT_EQ("2", package.version);
    EXPECT_FALSE(database.next(package));
}

TEST(ApkParser, ATruncatedFileGivesAtMostThePackagesBeforeItsEnd) {
    const std::string text = kApk;
    for (std::size_t length = 0; length <= text.size(); ++length) {
        const std::string cut = text.substr(0, length);
        ApkParser database(cut);
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

}  // namespace
}  // namespace toolkit
