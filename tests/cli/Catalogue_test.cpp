// `zav sw` with the signatures that come with the command, as a whole process.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

class CatalogueTest : public testing::Test {
  protected:
    void SetUp() override { std::filesystem::create_directory(path("given")); }
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    std::string given(const std::string& what) const { return readAll(path("given/" + what + "1")); }
    // A run with a scanner for which each signature matches.
    Process sw(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"sw", "--toolkit", scanner("answers")});
        return Process(arguments).environment("ZAVTEST_GIVEN", path("given"));
    }
    // A run with these results.
    Process swWith(const std::string& results, std::vector<std::string> arguments = {}) {
        scratch_.write("results.xml", "<MatchedSignatures>" + results + "</MatchedSignatures>");
        return sw(std::move(arguments)).environment("ZAVTEST_OUTPUT", path("results.xml"));
    }
    static void expectSays(const std::string& text, const std::string& part) {
        EXPECT_NE(std::string::npos, text.find(part)) << part << "\nis not in\n" << text;
    }

    ScratchDir scratch_;
};

constexpr const char* kResults =
    "<MatchedSignature "
    "guid=\"zav.b\"><Metadata><Name>Bash</Name><Cpe>cpe:2.3:a:gnu:bash:5.2:*:*:*:*:*:*:*</Cpe>"
    "<Purl>pkg:generic/bash@5.2</Purl></Metadata><Variable name=\"package\" "
    "value=\"pkg:deb/debian/bash@5.2-1\"/>"
    "<Variable name=\"path\" value=\"/usr/bin/bash\"/><Variable name=\"version\" "
    "value=\"5.2\"/></MatchedSignature>"
    "<MatchedSignature guid=\"zav.n\"><Metadata><Name>left-pad</Name></Metadata>"
    "<Variable name=\"package\" value=\"\"/><Variable name=\"purl\" value=\"pkg:npm/left-pad@1.3.0\"/>"
    "<Variable name=\"path\" value=\"/srv/app/node_modules/left-pad\"/>"
    "<Variable name=\"version\" value=\"1.3.0\"/></MatchedSignature>"
    "<MatchedSignature guid=\"zav.t\"><Metadata><Name>tool</Name></Metadata><Variable name=\"package\" "
    "value=\"\"/>"
    "<Variable name=\"path\" value=\"/opt/tool/bin/tool\"/></MatchedSignature>";

TEST_F(CatalogueTest, ShippedSignaturesSearchTheWholeTree) {
    const Ended ended = sw({"--format", "json"}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_GE(Json::parse(ended.out).at("results").size(), 70U);
    expectSays(given("signatures"), "guid=\"zav.bash\"");
    expectSays(given("configuration"), "name=\"wholeTree\" value=\"true\"");
    expectSays(given("configuration"), "name=\"maxDepth\" value=\"64\"");
    expectSays(given("configuration"), "name=\"maxMatches\" value=\"200000\"");
    expectSays(given("configuration"), "name=\"maxEntries\" value=\"50000000\"");
    expectSays(given("configuration"), "name=\"maxFileSize\" value=\"64M\"");
    expectSays(given("configuration"), "name=\"timeLimit\" value=\"900\"");
    expectSays(given("configuration"), "name=\"allow\" value=\"/\"");
}

TEST_F(CatalogueTest, SettingsOfTheCommandLineComeLast) {
    ASSERT_EQ(0, sw({"--config", "FileSystem.wholeTree=false"}).run().status);
    const std::string configuration = given("configuration");
    const std::size_t own = configuration.find("name=\"wholeTree\" value=\"true\"");
    ASSERT_NE(std::string::npos, own) << configuration;
    EXPECT_NE(std::string::npos, configuration.find("name=\"wholeTree\" value=\"false\"", own))
        << configuration;
}

TEST_F(CatalogueTest, NamedFilesDoNotSearchTheWholeTree) {
    const std::string file =
        scratch_.write("one.xml", "<Signatures><Signature guid=\"g\"/></Signatures>").string();
    ASSERT_EQ(0, sw({file}).run().status);
    EXPECT_EQ(std::string::npos, given("configuration").find("wholeTree"));
    EXPECT_EQ(std::string::npos, given("signatures").find("zav.bash"));
}

TEST_F(CatalogueTest, ListShowsWhatIsRecognisedWithoutAScan) {
    const Ended ended = sw({"--list"}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(0U, ended.out.find("Name")) << ended.out;
    expectSays(ended.out, "zav.bash");
    expectSays(ended.out, "Free Software Foundation");
    EXPECT_TRUE(std::filesystem::is_empty(path("given")));
    const Json signatures = Json::parse(sw({"--list", "--format", "json"}).run().out).at("signatures");
    EXPECT_GE(signatures.size(), 70U);
    EXPECT_EQ(0U, sw({"--list", "--format", "csv"}).run().out.find("guid,name,publisher\r\n"));
}

TEST_F(CatalogueTest, ListOfFilesWarnsOfThoseThatAreNotWellFormed) {
    const std::string file =
        scratch_.write("cut.xml", "<Signatures><Signature guid=\"g\" name=\"One\"/><Signature gu").string();
    const Ended ended = sw({"--list", file}).run();
    EXPECT_EQ(0, ended.status);
    EXPECT_EQ("Name  Publisher  GUID\nOne              g\n", ended.out);
    EXPECT_EQ("zav: warning: " + file + " is not well-formed; 'zav sw --check' shows where\n", ended.err);
}

TEST_F(CatalogueTest, ShippedSignaturesAreCheckedAndExplainedByDefault) {
    expectSays(sw({"--check"}).run().out, ": valid\n");
    expectSays(sw({"--explain", "zav.bash"}).run().out, "explained zav.bash\n");
    expectSays(given("configuration"), "<Attribute name=\"wholeTree\" value=\"true\"/>");
}

TEST_F(CatalogueTest, TableHasALinePerProductAndLanguagePackagesFollow) {
    const Ended ended = swWith(kResults).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(0U, ended.out.find("Name      Version  Place                           Package\n"
                                 "Bash      5.2      /usr/bin/bash                   deb bash\n"
                                 "tool               /opt/tool/bin/tool              none\n"
                                 "left-pad  1.3.0    /srv/app/node_modules/left-pad  npm\n"
                                 "\n3 matches; "))
        << ended.out;
}

TEST_F(CatalogueTest, UnmanagedShowsWhatNoPackageOwns) {
    const Ended ended = swWith(kResults, {"--unmanaged"}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(std::string::npos, ended.out.find("Bash")) << ended.out;
    expectSays(ended.out, "left-pad");
    expectSays(ended.out, "2 matches of 3 shown; ");
    EXPECT_EQ(
        2U,
        Json::parse(swWith(kResults, {"--unmanaged", "--format", "json"}).run().out).at("results").size());
}

TEST_F(CatalogueTest, DetailsShowAllValues) {
    const Ended ended = swWith(kResults, {"--details"}).run();
    ASSERT_EQ(0, ended.status) << ended.err;
    expectSays(
        ended.out,
        "Bash  5.2\n  GUID     zav.b\n  package  pkg:deb/debian/bash@5.2-1\n  path     /usr/bin/bash\n");
}

TEST_F(CatalogueTest, IdentityIsInJsonAndCsv) {
    const Json bash = Json::parse(swWith(kResults, {"--format", "json"}).run().out).at("results").at(0);
    EXPECT_EQ("cpe:2.3:a:gnu:bash:5.2:*:*:*:*:*:*:*", bash.at("cpe"));
    EXPECT_EQ("pkg:generic/bash@5.2", bash.at("purl"));
    const Json tool = Json::parse(swWith(kResults, {"--format", "json"}).run().out).at("results").at(2);
    EXPECT_FALSE(tool.contains("cpe") || tool.contains("purl"));
    const std::string csv = swWith(kResults, {"--format", "csv"}).run().out;
    expectSays(csv, "0,zav.b,Bash,_cpe,cpe:2.3:a:gnu:bash:5.2:*:*:*:*:*:*:*\r\n");
    expectSays(csv, "1,zav.n,left-pad,_purl,pkg:npm/left-pad@1.3.0\r\n");
    expectSays(swWith(kResults, {"--format", "xml"}).run().out, "<Purl>pkg:generic/bash@5.2</Purl>");
}

TEST_F(CatalogueTest, TableFitsTheTerminal) {
    const std::string out = swWith(kResults).outputTerminal(50).run().out;
    expectSays(out, "/srv/app/n…s/left-pad  npm\r\n");
    expectSays(swWith(kResults).run().out, "/srv/app/node_modules/left-pad");
}

TEST_F(CatalogueTest, PrivatePlacesAreCountedAndNamedOnRequest) {
    std::string events = "<Events>";
    for (const char* path : {"/a", "/b", "/c", "/d"})
        events += std::string("<Event code=\"denied\" severity=\"warning\" guid=\"zav.b\" path=\"") + path +
                  "\" count=\"1\">private</Event>";
    const std::string file = scratch_.write("events.xml", events + "</Events>").string();
    const auto messages = [&](std::vector<std::string> arguments) {
        return swWith(kResults, std::move(arguments)).environment("ZAVTEST_WARNINGS", file).run().err;
    };
    expectSays(messages({}), "zav: warning: 4 files and directories may not be read or searched");
    EXPECT_EQ(std::string::npos, messages({}).find("/c"));
    expectSays(messages({"-v"}), "zav: warning: /c: private");
    const std::string own =
        scratch_.write("one.xml", "<Signatures><Signature guid=\"g\"/></Signatures>").string();
    expectSays(messages({own}), "zav: warning: /c: private");
}

TEST_F(CatalogueTest, MissingSignaturesAreReportedWithTheirPlace) {
    const std::filesystem::path copy = scratch_.path() / "bin" / "zav";
    std::filesystem::create_directory(copy.parent_path());
    std::filesystem::copy_file(ZAVTEST_COMMAND, copy);
    const Ended ended = sw({"--list"}).program(copy.string()).run();
    EXPECT_EQ(1, ended.status);
    expectSays(ended.err, "zav: there are no signatures in " + path("share/zav/signatures"));
}

}  // namespace
}  // namespace zavtest
