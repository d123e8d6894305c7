#include "cli/suggest/Draft.h"

#include <gtest/gtest.h>

#include "cli/scan/Xml.h"

namespace zavcli {
namespace {

VersionText text(const char* before, const char* version, const char* after = "") {
    return {"/usr/sbin/nginx", before, version, after, true};
}

std::string bestOf(std::vector<VersionText> texts) {
    const Findings findings{std::move(texts), {}, {}, {}};
    const VersionText* const best = bestText(findings, "nginx");
    return best == nullptr ? "" : best->before + best->version;
}

TEST(Draft, ProductNameHasNoVersionAndNoEnding) {
    const char* const cases[][2] = {
        {"/usr/sbin/nginx", "nginx"},
        {"/opt/tool-1.2.3", "tool"},
        {"/opt/tool-1.2.3/", "tool"},
        {"/usr/bin/python3.11", "python"},
        {"/usr/lib/libz.so.1.2", "libz"},
        {"/srv/log4j-core-2.17.1.jar", "log4j-core"},
        {"/usr/bin/7z", "7z"},
        {"/usr/bin/gcc-12", "gcc"},
        {"/opt/x_2.0", "x"},
        {"/usr/bin/sha256sum", "sha256sum"},
        {"tool", "tool"},
    };
    for (const auto& [path, name] : cases) EXPECT_EQ(name, productNameOf(path)) << path;
}

TEST(Draft, ExpressionMatchesTheTextWithOtherNumbers) {
    EXPECT_EQ(R"(a\.b \(c\)\[[0-9]+\]/)", escapedExpression("a.b (c)[12]/"));
}

TEST(Draft, BestTextNamesTheProductAndOneVersion) {
    EXPECT_EQ("nginx/1.22.1", bestOf({text("zlib/", "1.2.13"), text("nginx/", "1.22.1")}));
    EXPECT_EQ("nginx version: nginx/1.22.1", bestOf({text("nginx ", "0.8"), text("nginx ", "1.22.1"),
                                                     text("nginx version: nginx/", "1.22.1")}));
    EXPECT_EQ("nginx/1.22.1", bestOf({text("nginx/", "1.22.1"), text("nginx version: nginx/", "1.22.1")}));
    EXPECT_EQ("version 1.22.1", bestOf({text("version ", "1.22.1")}));
}

TEST(Draft, TextThatComparesVersionsIsNotUsed) {
    EXPECT_EQ("", bestOf({text("nginx older than ", "1.0"), text("nginx ", "0.8", " or later")}));
    EXPECT_EQ("", bestOf({}));
}

TEST(Draft, PlacesOfProgramsAreTheUsualOnesAndVersionsAreLeftOpen) {
    EXPECT_EQ("/{bin,sbin,usr/bin,usr/sbin,usr/local/bin,usr/local/sbin,opt/*/bin,opt/*/sbin}/nginx",
              placesPattern("/usr/sbin/nginx"));
    EXPECT_EQ("/opt/tool-*/bin/tool", placesPattern("/opt/tool-1.2.3/bin/tool"));
    EXPECT_EQ("/usr/lib/postgresql/*/bin/postgres", placesPattern("/usr/lib/postgresql/15/bin/postgres"));
    EXPECT_EQ("/srv/log4j-core-*.jar", placesPattern("/srv/log4j-core-2.17.1.jar"));
    EXPECT_EQ("/srv/a\\[b\\]/\\{c\\}", placesPattern("/srv/a[b]/{c}"));
}

TEST(Draft, MetadataFileOfTheProductIsPreferred) {
    const Findings findings{{text("nginx/", "1.22.1")},
                            {{"/opt/nginx/lib/part.jar", "jar", "Part", "7"},
                             {"/opt/nginx/package.json", "json", "nginx-ui", "2.0"}},
                            {},
                            {}};
    const std::string draft = draftText({"/opt/nginx", "nginx"}, findings);
    EXPECT_NE(std::string::npos, draft.find(R"(key="name" regex="^nginx-ui$")")) << draft;
    EXPECT_NE(std::string::npos, draft.find(R"(value="${v.value}")")) << draft;
    EXPECT_NE(std::string::npos, draft.find("part.jar")) << "everything else is in the comments";
}

TEST(Draft, HostileTextsLeaveTheDraftWellFormed) {
    const Findings findings{{text("a-->\x1b<b>\"&", "1.2", "--"), text("--", "1.3", "-")},
                            {{"/x--y", "json", "-->", "1"}},
                            {},
                            {"pkg:deb/debian/a--b@1--2"}};
    for (const char* path : {"/opt/a--b", "/opt/<x>\"&'", "/opt/-", "/opt/$1${x}"}) {
        const std::string draft = draftText({path, productNameOf(path)}, findings);
        const std::optional<XmlElement> root = readXmlElement(draft);
        ASSERT_TRUE(root) << draft;
        EXPECT_EQ(std::string::npos, draft.find('\x1b'));
    }
}

}  // namespace
}  // namespace zavcli
