// `zav sbom` as a whole process, with the bundled scanners on a small tree.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/cli/Process.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

constexpr const char* kSignatures = R"(<Signatures>
<Signature guid="t.tool" name="Tool">
 <Metadata><Publisher>Tool Makers</Publisher></Metadata>
 <Match><Property id="v" path="/opt/tool/release" format="properties" key="version"/></Match>
 <Output><Variable name="version" value="${v.value}"/><Variable name="path" value="/opt/tool"/>
  <Variable name="package" value=""/></Output>
</Signature>
<Signature guid="t.bash" name="GNU Bash">
 <Match><Package id="p" name="bash"/></Match>
 <Output><Variable name="version" value="${p.upstream}"/><Variable name="package" value="${p.purl}"/></Output>
</Signature>
</Signatures>
)";

class SbomTest : public testing::Test {
  protected:
    void SetUp() override {
        scratch_.write("tree/etc/os-release", "ID=debian\nVERSION_ID=12\nPRETTY_NAME=\"Debian 12\"\n");
        scratch_.write(
            "tree/var/lib/dpkg/status",
            "Package: bash\nStatus: install ok installed\nArchitecture: amd64\nMaintainer: M <m@x.org>\n"
            "Version: 5.2.15-2+b8\nDescription: the shell\n\n");
        scratch_.write("tree/opt/tool/release", "version=2.10\n");
        scratch_.write("s.xml", kSignatures);
    }
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    Process sbom(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"sbom", path("s.xml"), "--root", path("tree")});
        return Process(arguments).locationFile(std::nullopt).environment("SOURCE_DATE_EPOCH", std::nullopt);
    }

    ScratchDir scratch_;
};

TEST_F(SbomTest, TreeIsOneDocument) {
    const Ended ended = sbom({}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ("", ended.err);
    const Json json = Json::parse(ended.out);
    EXPECT_EQ("debian", json.at("metadata").at("component").at("name"));
    ASSERT_EQ(2U, json.at("components").size());
    const Json& bash = json.at("components").at(0);
    EXPECT_EQ("pkg:deb/debian/bash@5.2.15-2%2Bb8?arch=amd64", bash.at("purl"));
    EXPECT_EQ("GNU Bash", bash.at("components").at(0).at("name"));
    const Json& tool = json.at("components").at(1);
    EXPECT_EQ("2.10", tool.at("version"));
    EXPECT_EQ("Tool Makers", tool.at("supplier").at("name"));
    EXPECT_EQ("/opt/tool/release", tool.at("evidence").at("occurrences").at(0).at("location"));
}

TEST_F(SbomTest, PackagesOfAProgramAreWithinIt) {
    scratch_.write(
        "tree/opt/shop/shop.deps.json",
        R"({"libraries": {"shop/1.0.0": {"type": "project"}, "Serilog/3.1.1": {"type": "package"},)"
        R"( "Dapper/2.1.28": {"type": "package"}}})");
    const auto bill = [&](const char* format) {
        const Ended ended = Process({"sbom", "--root", path("tree"), "--format", format}).run();
        EXPECT_EQ(0, ended.status) << ended.err;
        return Json::parse(ended.out);
    };
    const auto named = [](const Json& list, const char* name) {
        const auto found = std::find_if(list.begin(), list.end(),
                                        [name](const Json& item) { return item.at("name") == name; });
        return found == list.end() ? Json::object() : *found;
    };
    const Json shop = named(bill("cyclonedx").at("components"), "shop");
    ASSERT_EQ(2U, shop.at("components").size());
    EXPECT_EQ("pkg:nuget/Serilog@3.1.1", named(shop.at("components"), "Serilog").at("purl"));
    const Json spdx = bill("spdx");
    const Json contains = {{"spdxElementId", named(spdx.at("packages"), "shop").at("SPDXID")},
                           {"relationshipType", "CONTAINS"},
                           {"relatedSpdxElement", named(spdx.at("packages"), "Serilog").at("SPDXID")}};
    const Json& relationships = spdx.at("relationships");
    EXPECT_EQ(1, std::count(relationships.begin(), relationships.end(), contains));
}

TEST_F(SbomTest, TwoRunsGiveTheSameDocument) {
    EXPECT_EQ(sbom({"--hashes"}).run().out, sbom({"--hashes"}).run().out);
    const auto spdx = [&] {
        return sbom({"--hashes", "--format", "spdx"})
            .environment("SOURCE_DATE_EPOCH", "1000000000")
            .run()
            .out;
    };
    EXPECT_EQ(spdx(), spdx());
    EXPECT_NE(std::string::npos, spdx().find("\"created\": \"2001-09-09T01:46:40Z\""));
}

TEST_F(SbomTest, PlaceOfTheTreeIsNotInTheDocument) {
    EXPECT_EQ(std::string::npos, sbom({"--hashes"}).run().out.find(path("tree")));
    EXPECT_EQ(std::string::npos, sbom({"--format", "spdx"}).run().out.find(path("tree")));
}

TEST_F(SbomTest, HashesAreThoseOfTheFiles) {
    const Ended ended = sbom({"--hashes", "--format", "spdx"}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    const Json files = Json::parse(ended.out).at("files");
    ASSERT_EQ(1U, files.size());
    EXPECT_EQ("./opt/tool/release", files.at(0).at("fileName"));
    EXPECT_EQ("9488fd0a58523c8a157f05b7f9f7df4fb5b83dab",
              files.at(0).at("checksums").at(0).at("checksumValue"));
}

TEST_F(SbomTest, DocumentGoesToTheFile) {
    const Ended ended = sbom({"-o", path("out.json"), "--format", "SPDX"}).run();
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ("", ended.out);
    EXPECT_EQ("SPDX-2.3", Json::parse(readAll(path("out.json"))).at("spdxVersion"));
}

TEST_F(SbomTest, UnreadableDatabaseIsTold) {
    std::filesystem::remove(path("tree/var/lib/dpkg/status"));
    std::filesystem::create_directory(path("tree/var/lib/dpkg/status"));
    const Ended ended = sbom({}).run();
    EXPECT_EQ(3, ended.status) << ended.err;
    EXPECT_EQ("incomplete", Json::parse(ended.out).at("compositions").at(0).at("aggregate"));
    EXPECT_NE("", ended.err);
}

TEST_F(SbomTest, EmptyTreeHasAnEmptyDocument) {
    std::filesystem::create_directory(path("empty"));
    const Ended ended =
        Process({"sbom", path("s.xml"), "--root", path("empty")}).locationFile(std::nullopt).run();
    EXPECT_EQ(0, ended.status) << ended.err;
    const Json json = Json::parse(ended.out);
    EXPECT_EQ(Json::array(), json.at("components"));
    EXPECT_EQ("unknown", json.at("metadata").at("component").at("name"));
}

TEST_F(SbomTest, BadUsageExitsWithTwo) {
    EXPECT_EQ(2, sbom({"--format", "json"}).run().status);
    EXPECT_EQ(2, sbom({"--guid", "t.tool"}).run().status);
    const Ended ended = sbom({}).environment("SOURCE_DATE_EPOCH", "today").run();
    EXPECT_EQ(2, ended.status);
    EXPECT_EQ("zav: SOURCE_DATE_EPOCH is 'today', which is not a number of seconds since 1970\n", ended.err);
}

}  // namespace
}  // namespace zavtest
