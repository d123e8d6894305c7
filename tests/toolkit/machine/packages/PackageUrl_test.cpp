#include "toolkit/machine/packages/PackageUrl.h"

#include <gtest/gtest.h>

namespace toolkit {
namespace {

TEST(PackageUrl, PartsAreInOrder) {
    EXPECT_EQ("pkg:deb/debian/bash@5.2.15-2?arch=amd64",
              packageUrl("deb", "debian", "bash", "5.2.15-2", {{"arch", "amd64"}}));
}

TEST(PackageUrl, EmptyPartsAreOmitted) {
    EXPECT_EQ("pkg:snap/core20@20230801", packageUrl("snap", "", "core20", "20230801", {{"arch", ""}}));
    EXPECT_EQ("pkg:deb/bash", packageUrl("deb", "", "bash", "", {}));
    EXPECT_EQ("pkg:rpm/fedora/a@1-1?epoch=2",
              packageUrl("rpm", "fedora", "a", "1-1", {{"arch", ""}, {"epoch", "2"}}));
}

TEST(PackageUrl, ANamespaceMayHaveSegments) {
    EXPECT_EQ("pkg:golang/github.com/a%2Bb/c@v1", packageUrl("golang", "github.com/a+b", "c", "v1", {}));
    EXPECT_EQ("pkg:npm/%40types/node@20.1.0", packageUrl("npm", "@types", "node", "20.1.0", {}));
}

TEST(PackageUrl, QualifiersAreJoinedByAmpersands) {
    EXPECT_EQ("pkg:rpm/fedora/a@1-1?arch=x86_64&epoch=2",
              packageUrl("rpm", "fedora", "a", "1-1", {{"arch", "x86_64"}, {"epoch", "2"}}));
}

TEST(PackageUrl, ReservedCharactersAreEscaped) {
    const struct {
        const char* version;
        const char* url;
    } kCases[] = {
        {"5.2.15-2+b8", "pkg:deb/debian/a@5.2.15-2%2Bb8"},
        {"1:2.0~rc1", "pkg:deb/debian/a@1:2.0~rc1"},
        {"1/2", "pkg:deb/debian/a@1%2F2"},
        {"1@2?3#4", "pkg:deb/debian/a@1%402%3F3%234"},
        {"1 2%", "pkg:deb/debian/a@1%202%25"},
        {"\xc3\xa9\xff", "pkg:deb/debian/a@%C3%A9%FF"},
        {"_.-", "pkg:deb/debian/a@_.-"},
    };
    for (const auto& test : kCases) EXPECT_EQ(test.url, packageUrl("deb", "debian", "a", test.version, {}));
}

TEST(PackageUrl, NamesAreEscapedToo) {
    EXPECT_EQ("pkg:deb/debian/g%2B%2B@1", packageUrl("deb", "debian", "g++", "1", {}));
}

}  // namespace
}  // namespace toolkit
