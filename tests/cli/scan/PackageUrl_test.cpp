#include "cli/scan/PackageUrl.h"

#include <gtest/gtest.h>

namespace zavcli {
namespace {

TEST(PackageUrl, PartsAreSeparatedAndDecoded) {
    const struct {
        const char* text;
        const char* type;
        const char* nameSpace;
        const char* name;
        const char* version;
    } cases[] = {
        {"pkg:deb/debian/bash@5.2.15-2%2Bb8?arch=amd64", "deb", "debian", "bash", "5.2.15-2+b8"},
        {"pkg:npm/%40angular/core@17.0.0", "npm", "@angular", "core", "17.0.0"},
        {"pkg:npm/@angular/core", "npm", "@angular", "core", ""},
        {"pkg:golang/github.com/a/b@v1.2.3#sub/dir", "golang", "github.com/a", "b", "v1.2.3"},
        {"pkg:PyPI/requests@2.31", "pypi", "", "requests", "2.31"},
        {"pkg:deb/debian/git@1:2.39.5?arch=amd64&distro=bookworm", "deb", "debian", "git", "1:2.39.5"},
        {"pkg://generic/x", "generic", "", "x", ""},
        {"pkg:generic/100%", "generic", "", "100%", ""},
        {"pkg:generic/a%2", "generic", "", "a%2", ""},
        {"pkg:generic/a%zz", "generic", "", "a%zz", ""},
    };
    for (const auto& [text, type, nameSpace, name, version] : cases) {
        const std::optional<PackageUrl> url = parsePackageUrl(text);
        ASSERT_TRUE(url) << text;
        EXPECT_EQ(type, url->type) << text;
        EXPECT_EQ(nameSpace, url->nameSpace) << text;
        EXPECT_EQ(name, url->name) << text;
        EXPECT_EQ(version, url->version) << text;
    }
}

TEST(PackageUrl, QualifiersAndSubpathAreParsed) {
    const std::optional<PackageUrl> url = parsePackageUrl("pkg:deb/a/b@1?Arch=amd64&epoch=1&x=a%26b&bad#p/q");
    ASSERT_TRUE(url);
    ASSERT_EQ(3U, url->qualifiers.size());
    EXPECT_EQ("amd64", valueOf(url->qualifiers, "arch"));
    EXPECT_EQ("a&b", valueOf(url->qualifiers, "x"));
    EXPECT_EQ("p/q", url->subpath);
}

TEST(PackageUrl, OtherTextsAreNoPackageUrls) {
    for (const char* text :
         {"", "pkg:", "pkg:deb", "pkg:/x", "pkg:deb/", "pkg:deb/a/", "dpkg:bash", "http://x/y"})
        EXPECT_FALSE(parsePackageUrl(text)) << text;
}

TEST(PackageUrl, CutPackageUrlIsReadAsFarAsItGoes) {
    const std::string whole = "pkg:deb/debian/bash@5.2%2B8?arch=amd64#a";
    for (std::size_t size = 0; size <= whole.size(); ++size) {
        const std::string text = whole.substr(0, size);
        const std::optional<PackageUrl> url = parsePackageUrl(text);
        const bool hasName = size > std::string("pkg:deb/").size() && !text.ends_with("debian/");
        EXPECT_EQ(hasName, url.has_value()) << text;
    }
}

TEST(PackageUrl, TypesOfLanguagesAreTold) {
    for (const char* type : {"npm", "pypi", "golang", "cargo", "maven"})
        EXPECT_TRUE(isLanguageType(type)) << type;
    for (const char* type : {"deb", "rpm", "generic", "github", "", "NPM"})
        EXPECT_FALSE(isLanguageType(type)) << type;
}

}  // namespace
}  // namespace zavcli
