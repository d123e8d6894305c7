#include <gtest/gtest.h>

#include <filesystem>

#include "tests/toolkit/quorvis/ArchiveBuilder.h"
#include "tests/toolkit/quorvis/BinaryFiles.h"
#include "tests/toolkit/quorvis/LeafTester.h"
#include "tests/toolkit/quorvis/ProgramsWithModules.h"

namespace toolkit::quorvis {
namespace {

class ComponentLeaf : public ::testing::Test {
  protected:
    LeafResult ask(const std::string& format, LeafTester::Attributes attributes = {}) {
        attributes.emplace_back(Attribute::Path, "/f");
        attributes.emplace_back(Attribute::Format, format);
        return tester_.ask(LeafKind::Component, std::move(attributes));
    }
    LeafResult askOf(const std::string& content, const std::string& format,
                     LeafTester::Attributes attributes = {}) {
        std::filesystem::remove(tester_.tree.path() / "f");
        tester_.tree.write("f", content);
        return ask(format, std::move(attributes));
    }
    // "role name version purl" of each item, one per line. A missing value is "-".
    static std::string textOf(const LeafResult& result) {
        std::string text;
        for (const Item& item : result.items) {
            for (const char* const field : {"role", "name", "version", "purl"}) {
                const std::string* const value = item.find(field);
                text += (value == nullptr ? "-" : *value) + " ";
            }
            text.back() = '\n';
        }
        return text;
    }
    // Truncates the content to every length, and replaces each byte. No result may be wrong.
    void expectNoHarm(const std::string& content, const std::string& format, const std::string& found) {
        for (std::size_t size = 0; size < content.size(); ++size) {
            const LeafResult result = askOf(content.substr(0, size), format);
            EXPECT_TRUE(found.starts_with(textOf(result)) || result.incomplete) << size;
        }
        std::string changed = content;
        for (std::size_t at = 0; at < content.size(); ++at) {
            changed[at] = '\xff';
            EXPECT_LE(askOf(changed, format).items.size(), 20U) << at;
            changed[at] = content[at];
        }
    }

    LeafTester tester_;
};

TEST_F(ComponentLeaf, AProgramOfGoNamesItsModules) {
    const LeafResult result = askOf(quorvistest::elfFile(".go.buildinfo", inlineInfo(), ""), "go");
    EXPECT_EQ(kFound, textOf(result));
    EXPECT_TRUE(result.events.empty());
    EXPECT_EQ("/f", result.items.at(0).source);
    EXPECT_EQ("/f", *result.items.at(0).find("path"));
}

TEST_F(ComponentLeaf, AProgramOfGoWithoutSectionsNamesThemToo) {
    EXPECT_EQ(kFound, textOf(askOf(elfProgram(std::string(32, 'x') + inlineInfo()), "go")));
    EXPECT_EQ("", textOf(askOf(elfProgram(std::string(8, 'x') + inlineInfo()), "go"))) << "not aligned";
    EXPECT_EQ("", textOf(askOf(elfProgram("text"), "go")));
}

TEST_F(ComponentLeaf, OlderProgramsOfGoHavePointers) {
    std::string found = kFound;
    for (std::size_t at = found.find("1.21.3"); at != std::string::npos; at = found.find("1.21.3"))
        found.replace(at, 6, "1.17.2");
    for (const bool wide : {false, true}) {
        for (const bool big : {false, true}) {
            const std::string info = pointedInfo(kBase, wide ? 8 : 4, big);
            EXPECT_EQ(found, textOf(askOf(elfProgram(info, wide, big), "go"))) << wide << big;
        }
    }
    EXPECT_EQ(found, textOf(askOf(windowsProgramWith(".data", pointedInfo(kBase + 0x1000, 8, false)), "go")));
    EXPECT_TRUE(askOf(elfProgram(pointedInfo(kBase + 0x100000, 8, false)), "go").incomplete);
}

TEST_F(ComponentLeaf, PointersThatAreSetWhenAProgramIsLoadedAreNoDamage) {
    const std::string info = pointedInfo(kBase, 8, false);
    for (const std::size_t pointer : {16U, 24U, 32U, 48U}) {
        const LeafResult result =
            askOf(elfProgram(std::string(info).replace(pointer, 8, std::string(8, '\0'))), "go");
        EXPECT_FALSE(result.incomplete) << pointer;
    }
    const std::string withoutModules = std::string(info).replace(24, 8, put(kBase + 0x100000, 8));
    EXPECT_EQ("toolchain stdlib 1.17.2 pkg:golang/stdlib@1.17.2\n",
              textOf(askOf(elfProgram(withoutModules), "go")));
}

TEST_F(ComponentLeaf, AProgramOfGoForWindowsNamesItsModules) {
    EXPECT_EQ(kFound, textOf(askOf(windowsProgramWith(".data", std::string(16, '\0') + inlineInfo()), "go")));
}

TEST_F(ComponentLeaf, SettingsOfTheBuildAreFoundOnRequest) {
    const LeafResult result = askOf(elfProgram(inlineInfo()), "go", {{Attribute::Role, "setting"}});
    std::string text;
    for (const Item& item : result.items) text += *item.find("name") + " is " + *item.find("value") + "\n";
    EXPECT_EQ("-compiler is gc\n-ldflags is -X 'main.a=b c'\nvcs.revision is 0123abc\n", text);
    EXPECT_EQ(1U, ask("go", {{Attribute::Role, "setting"}, {Attribute::Name, "vcs.revision"}}).items.size());
}

TEST_F(ComponentLeaf, WhatAProgramContainsHasItAsItsContainer) {
    const LeafResult result = askOf(elfProgram(inlineInfo()), "go");
    for (const Item& item : result.items) {
        const bool main = *item.find("role") == "main";
        ASSERT_EQ(main, item.find("container") == nullptr);
        if (!main) {
            EXPECT_EQ("/f", *item.find("container"));
        }
    }
    EXPECT_EQ("-", LeafTester::first(ask("go", {{Attribute::Role, "setting"}}), "container"));
}

TEST_F(ComponentLeaf, AnUnknownVersionIsNotReported) {
    EXPECT_EQ("main example.com/tool - pkg:golang/example.com/tool\n",
              textOf(askOf(elfProgram(inlineInfo("custom", "mod\texample.com/tool\t(devel)\t\n")), "go")));
    EXPECT_EQ("toolchain stdlib 1.22-0123abc pkg:golang/stdlib@1.22-0123abc\n",
              textOf(askOf(elfProgram(inlineInfo("devel go1.22-0123abc Mon", "")), "go")));
    EXPECT_EQ("main example.com/a/cmd/b - pkg:golang/example.com/a/cmd/b\n",
              textOf(askOf(elfProgram(inlineInfo("x", "path\texample.com/a/cmd/b\n")), "go")))
        << "built without modules";
    EXPECT_EQ("", textOf(askOf(elfProgram(inlineInfo("x", "path\tcommand-line-arguments\n")), "go")));
}

TEST_F(ComponentLeaf, RoleNameAndVersionSelect) {
    const std::string content = elfProgram(inlineInfo());
    EXPECT_EQ(3U, askOf(content, "go", {{Attribute::Role, "dependency"}}).items.size());
    EXPECT_EQ(1U, askOf(content, "go", {{Attribute::Name, "golang.org/x/sys"}, {Attribute::Below, "0.2"}})
                      .items.size());
    const LeafResult newer =
        askOf(content, "go", {{Attribute::Role, "dependency"}, {Attribute::AtLeast, "0"}});
    EXPECT_EQ(2U, newer.items.size()) << "one has no version";
    EXPECT_FALSE(newer.incomplete);
}

TEST_F(ComponentLeaf, DamagedProgramsOfGoAreHarmless) {
    expectNoHarm(elfProgram(inlineInfo()), "go", kFound);
    expectNoHarm(elfProgram(pointedInfo(kBase, 8, false)), "go", "");
    expectNoHarm(windowsProgramWith(".data", inlineInfo()), "go", kFound);
}

constexpr char kCrates[] = R"({"packages": [
    {"name": "adler", "version": "1.0.2", "source": "crates.io"},
    {"name": "cc", "version": "1.0.80", "source": "crates.io", "kind": "build"},
    {"name": "tool", "version": "0.3.0+x", "source": "local", "dependencies": [0, 1], "root": true}]})";
constexpr char kFoundCrates[] =
    "dependency adler 1.0.2 pkg:cargo/adler@1.0.2\n"
    "build cc 1.0.80 pkg:cargo/cc@1.0.80\n"
    "main tool 0.3.0+x pkg:cargo/tool@0.3.0%2Bx\n";

TEST_F(ComponentLeaf, AProgramOfRustMayListItsCrates) {
    const std::string list = deflated(kCrates);
    EXPECT_EQ(kFoundCrates, textOf(askOf(quorvistest::elfFile(".dep-v0", list, ""), "rust")));
    EXPECT_EQ(kFoundCrates,
              textOf(askOf(windowsProgramWith(".dep-v0", list + std::string(100, '\0')), "rust")))
        << "padded";
    EXPECT_EQ("", textOf(askOf(quorvistest::elfFile(".rodata", list, ""), "rust")));
}

TEST_F(ComponentLeaf, ADamagedOrEndlessListOfCratesIsUnknown) {
    const std::string list = deflated(kCrates);
    const std::string endless = deflated("{\"packages\": [" + std::string(std::size_t{20} << 20, ' '));
    for (const std::string& content : {std::string("text"), list.substr(0, list.size() / 2), endless}) {
        const LeafResult result = askOf(quorvistest::elfFile(".dep-v0", content, ""), "rust");
        EXPECT_TRUE(result.items.empty());
        EXPECT_TRUE(result.incomplete);
        EXPECT_EQ(std::vector{EventCode::Parse}, LeafTester::codes(result));
    }
    const LeafResult large =
        askOf(quorvistest::elfFile(".dep-v0", std::string((std::size_t{1} << 20) + 1, 'x'), ""), "rust");
    EXPECT_EQ(std::vector{EventCode::LimitBytes}, LeafTester::codes(large));
    expectNoHarm(quorvistest::elfFile(".dep-v0", list, ""), "rust", kFoundCrates);
}

constexpr char kDirectoryOf[] = "META-INF/maven/g/a/";

std::string properties(const std::string& group, const std::string& artifact, const std::string& version) {
    return "groupId=" + group + "\nartifactId=" + artifact + "\nversion=" + version + "\n";
}

std::string mavenJar(const std::string& group, const std::string& artifact, const std::string& version) {
    ArchiveBuilder archive;
    archive.add("META-INF/MANIFEST.MF", "Manifest-Version: 1.0\n");
    archive.add(std::string(kDirectoryOf) + "pom.properties", properties(group, artifact, version));
    return archive.build();
}

// "path role name version group container" of each item, one per line. A missing value is "-".
std::string placesOf(const LeafResult& result) {
    std::string text;
    for (const Item& item : result.items) {
        for (const char* const field : {"path", "role", "name", "version", "group", "container"}) {
            const std::string* const value = item.find(field);
            text += (value == nullptr ? "-" : *value) + " ";
        }
        text.back() = '\n';
    }
    return text;
}

TEST_F(ComponentLeaf, AnArchiveContainsArchives) {
    for (const bool deflated : {false, true}) {
        ArchiveBuilder inner;
        inner.add("WEB-INF/lib/log4j-core-2.17.0.jar", mavenJar("org.log", "log4j-core", "2.17.0"), deflated);
        ArchiveBuilder outer;
        outer.add("META-INF/MANIFEST.MF", "Implementation-Version: 7\n");
        outer.add("lib/plain-1.5-beta.jar", ArchiveBuilder().build(), deflated);
        outer.add("app.war", inner.build(), deflated);
        const LeafResult result = askOf(outer.build(), "jar");
        EXPECT_EQ(
            "/f main f 7 - -\n"
            "/f!/lib/plain-1.5-beta.jar dependency plain 1.5-beta - /f\n"
            "/f!/app.war dependency app - - /f\n"
            "/f!/app.war!/WEB-INF/lib/log4j-core-2.17.0.jar dependency log4j-core 2.17.0 org.log "
            "/f!/app.war\n",
            placesOf(result));
        EXPECT_EQ("pkg:maven/org.log/log4j-core@2.17.0", *result.items.back().find("purl"));
        EXPECT_TRUE(result.events.empty());
    }
}

TEST_F(ComponentLeaf, ArchivesAreOpenedTwoLevelsDeep) {
    ArchiveBuilder third;
    third.add("d.jar", mavenJar("g", "d", "4"));
    ArchiveBuilder second;
    second.add("c.jar", third.build());
    ArchiveBuilder first;
    first.add("b.war", second.build());
    tester_.tree.write("a.ear", first.build());
    const LeafResult result =
        tester_.ask(LeafKind::Component, {{Attribute::Path, "/a.ear"}, {Attribute::Format, "jar"}});
    EXPECT_EQ(
        "/a.ear main a - - -\n/a.ear!/b.war dependency b - - /a.ear\n"
        "/a.ear!/b.war!/c.jar dependency c - - /a.ear!/b.war\n",
        placesOf(result));
}

TEST_F(ComponentLeaf, AnArchiveMayContainUnpackedArtifacts) {
    ArchiveBuilder archive;
    archive.add("META-INF/maven/g/a/pom.properties", properties("g", "a", "1"));
    archive.add("META-INF/maven/g/a-all/pom.properties", properties("g", "a-all", "2"));
    archive.add("META-INF/maven/h/b/pom.properties", properties("h", "b", "3"));
    tester_.tree.write("a-all-2.jar", archive.build());
    const LeafResult result =
        tester_.ask(LeafKind::Component, {{Attribute::Path, "/a-all-2.jar"}, {Attribute::Format, "jar"}});
    EXPECT_EQ(
        "/a-all-2.jar main a-all 2 g -\n/a-all-2.jar dependency a 1 g /a-all-2.jar\n"
        "/a-all-2.jar dependency b 3 h /a-all-2.jar\n",
        placesOf(result));
}

TEST_F(ComponentLeaf, ADamagedArchiveWithinAnArchiveCostsItself) {
    const std::string good = mavenJar("g", "good", "1");
    ArchiveBuilder outer;
    outer.add("bad.jar", good.substr(0, good.size() - 1));
    outer.add("good.jar", good);
    const LeafResult result = askOf(outer.build(), "jar");
    EXPECT_EQ("/f!/bad.jar dependency bad - - /f\n/f!/good.jar dependency good 1 g /f\n", placesOf(result));
    EXPECT_EQ(std::vector{EventCode::Parse}, LeafTester::codes(result));
    EXPECT_EQ("an archive is damaged: !/bad.jar", result.events.at(0).text);
}

TEST_F(ComponentLeaf, AnArchiveThatUnpacksEndlesslyIsUnknown) {
    tester_.settings.fileSystem.maxContentSize = std::uint64_t{1} << 20;
    ArchiveBuilder large;
    large.add("a.jar", std::string(std::size_t{2} << 20, 'x'));
    const LeafResult tooLarge = askOf(large.build(), "jar");
    EXPECT_TRUE(tooLarge.incomplete);
    EXPECT_EQ("a member is larger than 1048576 bytes: !/a.jar", tooLarge.events.at(0).text);

    tester_.settings.fileSystem.maxContentSize = std::uint64_t{16} << 20;
    ArchiveBuilder many;
    const std::string zeros(std::size_t{16} << 20, '\0');
    for (int i = 0; i < 20; ++i) many.add(std::to_string(i) + ".jar", zeros);
    const LeafResult bomb = askOf(many.build(), "jar");
    EXPECT_EQ(std::vector{EventCode::LimitBytes}, LeafTester::codes(bomb));
}

TEST_F(ComponentLeaf, AnArchiveMayHaveACommentOfAnyLength) {
    for (const std::size_t size : {0U, 1U, 255U, 256U, 257U, 5'000U, 65'535U}) {
        ArchiveBuilder archive;
        archive.add("META-INF/MANIFEST.MF", "Implementation-Version: 7\n");
        EXPECT_EQ("main f 7 -\n", textOf(askOf(archive.build(false, std::string(size, 'c')), "jar"))) << size;
    }
}

TEST_F(ComponentLeaf, DamagedArchivesAreHarmless) {
    ArchiveBuilder outer;
    outer.add("a.jar", mavenJar("g", "a", "1"));
    expectNoHarm(outer.build(), "jar", "dependency a 1 pkg:maven/g/a@1\n");
}

struct Metadata {
    const char* format;
    const char* content;
    const char* found;
};

constexpr Metadata kMetadata[] = {
    {"npm", R"({"name": "left-pad", "version": "1.3.0", "dependencies": {"version": "9"}})",
     "main left-pad 1.3.0 pkg:npm/left-pad@1.3.0\n"},
    {"npm", R"({"version": "7.0.0", "name": "@babel/core"})",
     "main @babel/core 7.0.0 pkg:npm/%40babel/core@7.0.0\n"},
    {"npm", R"({"name": "workspace"})", ""},
    {"npm-lock", R"({"lockfileVersion": 3, "packages": {"": {"name": "app", "version": "0.1.0"},
        "node_modules/a": {"version": "1.0.0"}, "node_modules/a/node_modules/@s/b": {"version": "2.0.0"},
        "node_modules/alias": {"name": "real", "version": "3.0.0"}, "lib": {"link": true}}})",
     "main app 0.1.0 pkg:npm/app@0.1.0\ndependency a 1.0.0 pkg:npm/a@1.0.0\n"
     "dependency @s/b 2.0.0 pkg:npm/%40s/b@2.0.0\ndependency real 3.0.0 pkg:npm/real@3.0.0\n"},
    {"composer", R"({"packages": [{"name": "Symfony/Console", "version": "v6.4.1"},
        {"name": "broken"}, {"name": "psr/log", "version": "3.0.0"}], "dev": true})",
     "dependency symfony/console 6.4.1 pkg:composer/symfony/console@v6.4.1\n"
     "dependency psr/log 3.0.0 pkg:composer/psr/log@3.0.0\n"},
    {"composer", R"([{"name": "psr/log", "version": "1.1.4"}])",
     "dependency psr/log 1.1.4 pkg:composer/psr/log@1.1.4\n"},
    {"npm-lock", R"({"lockfileVersion": 3, "packages": {"node_modules/a": {"version": "1.0.0", "dev": true},
        "node_modules/b": {"version": "2.0.0", "dev": false}}})",
     "build a 1.0.0 pkg:npm/a@1.0.0\ndependency b 2.0.0 pkg:npm/b@2.0.0\n"},
    {"npm-lock", R"({"lockfileVersion": 1, "dependencies": {"a": {"version": "1.0.0", "dependencies":
        {"@s/b": {"version": "2.0.0"}, "c": {"version": "3.0.0", "dev": true}}}, "d": {"bundled": true}}})",
     "dependency a 1.0.0 pkg:npm/a@1.0.0\ndependency @s/b 2.0.0 pkg:npm/%40s/b@2.0.0\n"
     "build c 3.0.0 pkg:npm/c@3.0.0\n"},
    {"composer", R"({"packages": [{"name": "psr/log", "version": "3.0.0"}],
        "packages-dev": [{"name": "phpunit/phpunit", "version": "10.5.0"}]})",
     "dependency psr/log 3.0.0 pkg:composer/psr/log@3.0.0\n"
     "build phpunit/phpunit 10.5.0 pkg:composer/phpunit/phpunit@10.5.0\n"},
    {"composer", R"({"packages": [], "packages-dev": [{"name": "a/b", "version": "1"}]})",
     "build a/b 1 pkg:composer/a/b@1\n"},
    {"composer", "[]", ""},
    {"python", "Metadata-Version: 2.1\nName: Typing_Extensions\nVersion: 4.8.0\n\nVersion: 9\n",
     "main Typing_Extensions 4.8.0 pkg:pypi/typing-extensions@4.8.0\n"},
    {"gem", "# -*- encoding: utf-8 -*-\n# stub: rake 13.0.6 ruby lib\n\nGem::Specification.new do |s|\n",
     "main rake 13.0.6 pkg:gem/rake@13.0.6\n"},
    {"gem", "# stub: nokogiri 1.15.4 x86_64-linux lib\n",
     "main nokogiri 1.15.4 pkg:gem/nokogiri@1.15.4?platform=x86_64-linux\n"},
    {"gem",
     "Gem::Specification.new do |s|\n  s.required_rubygems_version = '1'\n  s.name = \"json\".freeze\n"
     "  s.version = Gem::Version.new('2.6.3')\nend\n",
     "main json 2.6.3 pkg:gem/json@2.6.3\n"},
    {"gem", "Gem::Specification.new do |s|\n  s.name = NAME\n  s.version = Foo::VERSION\nend\n", ""},
    {"nuget",
     "<package "
     "xmlns='urn:x'><metadata><id>Newtonsoft.Json</id><version>13.0.3</version></metadata></package>",
     "main Newtonsoft.Json 13.0.3 pkg:nuget/Newtonsoft.Json@13.0.3\n"},
    {"dotnet", R"({"libraries": {"App/1.0.0": {"type": "project"}, "Serilog/3.1.1": {"type": "package"},
        "runtimepack.Microsoft.NETCore.App.Runtime.linux-x64/8.0.0": {"type": "runtimepack"},
        "Other/1": {"type": "reference"}, "wrong": {"type": "package"}}})",
     "main App 1.0.0 pkg:nuget/App@1.0.0\ndependency Serilog 3.1.1 pkg:nuget/Serilog@3.1.1\n"
     "dependency Microsoft.NETCore.App.Runtime.linux-x64 8.0.0 "
     "pkg:nuget/Microsoft.NETCore.App.Runtime.linux-x64@8.0.0\n"},
    {"r", "Package: jsonlite\nVersion: 1.8.7\nTitle: A\n  Version: 9\nBuilt: R 4.3.1\n",
     "main jsonlite 1.8.7 pkg:cran/jsonlite@1.8.7\n"},
    {"perl", R"({"name": "JSON-XS", "version": "v4.03", "prereqs": {"name": "x"}})",
     "main JSON-XS 4.03 pkg:cpan/JSON-XS@4.03\n"},
};

TEST_F(ComponentLeaf, MetadataOfPackageManagersNamesPackages) {
    for (const Metadata& metadata : kMetadata) {
        const LeafResult result = askOf(metadata.content, metadata.format);
        EXPECT_EQ(metadata.found, textOf(result)) << metadata.content;
        EXPECT_FALSE(result.incomplete) << metadata.content;
    }
}

TEST_F(ComponentLeaf, APackageOfNpmIsReadUntilItsNameAndVersionAreKnown) {
    const std::string start =
        R"({"private": {"name": "x", "version": "9"}, "version": "1.3.0", "name": "left-pad")";
    const std::string found = "main left-pad 1.3.0 pkg:npm/left-pad@1.3.0\n";
    for (const char* const rest : {"}", ", \"name\": \"other\"}", ", damaged", ""}) {
        const LeafResult result = askOf(start + rest, "npm");
        EXPECT_EQ(found, textOf(result)) << rest;
        EXPECT_TRUE(result.events.empty()) << rest;
    }
    EXPECT_EQ(std::vector{EventCode::Parse},
              LeafTester::codes(askOf(R"({"name": "left-pad", damaged)", "npm")));
}

TEST_F(ComponentLeaf, AComponentThatHoldsAKeyIsLeftOut) {
    for (const char* const content : {R"({"name": "AGE-SECRET-KEY-1QQ", "version": "1"})",
                                      R"({"name": "a", "version": "AGE-SECRET-KEY-1QQ"})",
                                      R"({"name": "@AGE-SECRET-KEY-1QQ/a", "version": "1"})"}) {
        const LeafResult result = askOf(content, "npm");
        EXPECT_EQ("", textOf(result)) << content;
        EXPECT_EQ(std::vector{EventCode::Denied}, LeafTester::codes(result)) << content;
    }
    EXPECT_EQ("main a 1 pkg:npm/a@1\n",
              textOf(askOf(R"({"key": "AGE-SECRET-KEY-1QQ", "name": "a", "version": "1"})", "npm")));
}

TEST_F(ComponentLeaf, TruncatedMetadataGivesNoOtherPackages) {
    for (const Metadata& metadata : kMetadata) {
        const std::string content = metadata.content;
        for (std::size_t size = 0; size < content.size(); ++size) {
            const std::string found = textOf(askOf(content.substr(0, size), metadata.format));
            const auto lines = [](const std::string& text) { return std::ranges::count(text, '\n'); };
            EXPECT_LE(lines(found), std::max<std::ptrdiff_t>(1, lines(metadata.found)))
                << content.substr(0, size);
        }
    }
}

TEST_F(ComponentLeaf, AGroupIsAValue) {
    EXPECT_EQ("@babel", LeafTester::first(askOf(kMetadata[1].content, "npm"), "group"));
    EXPECT_EQ("-", LeafTester::first(askOf(kMetadata[0].content, "npm"), "group"));
}

TEST_F(ComponentLeaf, TooManyComponentsLeaveItIncomplete) {
    tester_.settings.fileSystem.maxMatches = 2;
    for (const auto& [format, content] :
         {std::pair{"go", elfProgram(inlineInfo())},
          std::pair{"rust", quorvistest::elfFile(".dep-v0", deflated(kCrates), "")}}) {
        const LeafResult result = askOf(content, format);
        EXPECT_EQ(2U, result.items.size()) << format;
        EXPECT_EQ(std::vector{EventCode::LimitMatches}, LeafTester::codes(result)) << format;
    }
}

TEST_F(ComponentLeaf, FilesOfOtherKindsAreFalse) {
    for (const char* const format : {"go", "rust", "jar"}) {
        for (const char* const content : {"", "MZ", "#!/bin/sh\n",
                                          "\x7f"
                                          "ELX"}) {
            const LeafResult result = askOf(content, format);
            EXPECT_TRUE(result.items.empty()) << format << content;
            EXPECT_FALSE(result.incomplete) << format << content;
        }
    }
    EXPECT_EQ(std::vector{EventCode::Unsupported}, LeafTester::codes(ask("cobol")));
    std::filesystem::remove(tester_.tree.path() / "f");
    EXPECT_FALSE(ask("go").incomplete) << "no such file";
}

}  // namespace
}  // namespace toolkit::quorvis
