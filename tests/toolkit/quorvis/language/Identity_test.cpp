#include "toolkit/quorvis/language/Identity.h"

#include <gtest/gtest.h>

#include <map>

namespace toolkit::quorvis {
namespace {

Identity identity(Identity::Kind kind, std::string_view text) {
    Identity parsed{kind, {}};
    std::string problem;
    EXPECT_TRUE(Template::parse(text, parsed.text, problem)) << problem;
    return parsed;
}

std::string fill(Identity::Kind kind, std::string_view text,
                 const std::map<std::string, std::string>& values) {
    const auto valueOf = [&values](std::string_view name) -> std::optional<std::string_view> {
        const auto found = values.find(std::string(name));
        if (found == values.end()) return std::nullopt;
        return found->second;
    };
    return filled(identity(kind, text), valueOf).value_or("none");
}

constexpr auto kCpe = Identity::Kind::Cpe;
constexpr auto kPurl = Identity::Kind::Purl;
constexpr char kNginx[] = "cpe:2.3:a:f5:nginx:${version}:*:*:*:*:*:*:*";

TEST(Cpe, AValueIsQuoted) {
    const std::pair<const char*, const char*> cases[] = {
        {"1.25.3", "1.25.3"},
        {"1:2.3+dfsg-1", "1\\:2.3\\+dfsg-1"},
        {"2.0 RC1", "2.0_rc1"},
        {"a\\b*", "a\\\\b\\*"},
        {"-", "\\-"},
        {"v1_2", "v1_2"},
        {"1.0~rc1", "1.0\\~rc1"},
    };
    for (const auto& [value, quoted] : cases) {
        EXPECT_EQ("cpe:2.3:a:f5:nginx:" + std::string(quoted) + ":*:*:*:*:*:*:*",
                  fill(kCpe, kNginx, {{"version", value}}));
    }
}

TEST(Cpe, AComponentWithoutAValueIsAny) {
    const std::string any = "cpe:2.3:a:f5:nginx:*:*:*:*:*:*:*:*";
    EXPECT_EQ(any, fill(kCpe, kNginx, {}));
    EXPECT_EQ(any, fill(kCpe, kNginx, {{"version", ""}}));
    EXPECT_EQ(any, fill(kCpe, kNginx, {{"version", "1.0\n"}}));
    EXPECT_EQ(any, fill(kCpe, "cpe:2.3:a:f5:nginx:${major}.${minor}:*:*:*:*:*:*:*", {{"major", "1"}}));
}

TEST(Cpe, AValueCannotAddComponents) {
    EXPECT_EQ("cpe:2.3:a:f5:nginx:1\\:\\*\\:x:*:*:*:*:*:*:*", fill(kCpe, kNginx, {{"version", "1:*:x"}}));
}

TEST(Cpe, ItsFormIsChecked) {
    for (const char* const text :
         {kNginx, "cpe:2.3:o:linux:linux_kernel:${v.version}:*:*:*:*:*:*:*",
          "cpe:2.3:a:a\\:b:c\\+\\+:-:*:*:*:*:*:x64:*", "cpe:2.3:a:v:${name}:1.*:*:*:*:*:*:*:*"}) {
        EXPECT_FALSE(problemOf(identity(kCpe, text)).has_value()) << text << *problemOf(identity(kCpe, text));
    }
    for (const char* const text :
         {"", "cpe:/a:f5:nginx", "cpe:2.3:a:f5:nginx:${version}",
          "cpe:2.3:a:f5:nginx:${version}:*:*:*:*:*:*:*:*", "cpe:2.3:x:f5:nginx:1:*:*:*:*:*:*:*",
          "cpe:2.3:a:f5::1:*:*:*:*:*:*:*", "cpe:2.3:a:f 5:nginx:1:*:*:*:*:*:*:*",
          "cpe:2.3:a:f+5:nginx:1:*:*:*:*:*:*:*", "cpe:2.3:a:f5:n*x:1:*:*:*:*:*:*:*",
          "cpe:2.3:a:f5:nginx:1:*:*:*:*:*:*:\\"}) {
        EXPECT_TRUE(problemOf(identity(kCpe, text)).has_value()) << text;
    }
}

TEST(Purl, AValueIsPercentEncoded) {
    EXPECT_EQ("pkg:generic/nginx@1.25%2Bx%2F%40", fill(kPurl, "pkg:generic/nginx@${v}", {{"v", "1.25+x/@"}}));
    EXPECT_EQ("pkg:npm/%40scope/name@1",
              fill(kPurl, "pkg:npm/${n}@${v}", {{"n", "@scope/name"}, {"v", "1"}}));
    EXPECT_EQ("pkg:generic/a@1?arch=x%26y%2Fz", fill(kPurl, "pkg:generic/a@1?arch=${a}", {{"a", "x&y/z"}}));
}

TEST(Purl, AWholeUrlIsInsertedAsItIs) {
    EXPECT_EQ("pkg:deb/debian/a@1%2B1?arch=amd64",
              fill(kPurl, "${p}", {{"p", "pkg:deb/debian/a@1%2B1?arch=amd64"}}));
}

TEST(Purl, WithoutAValueThereIsNone) {
    EXPECT_EQ("none", fill(kPurl, "pkg:generic/nginx@${v}", {}));
    EXPECT_EQ("none", fill(kPurl, "pkg:generic/nginx@${v}", {{"v", ""}}));
}

TEST(Purl, ItsFormIsChecked) {
    for (const char* const text :
         {"pkg:generic/nginx@${v}", "${f.package}", "pkg:npm/%40a/b", "pkg:github/a/b@1#sub"})
        EXPECT_FALSE(problemOf(identity(kPurl, text)).has_value()) << text;
    for (const char* const text : {"", "nginx@1", "pkg:nginx", "pkg:/nginx", "pkg:Generic/nginx",
                                   "pkg:generic/", "pkg:generic/@1", "pkg:generic/a b"})
        EXPECT_TRUE(problemOf(identity(kPurl, text)).has_value()) << text;
}

}  // namespace
}  // namespace toolkit::quorvis
