// `zav sw --suggest` as a whole process: its draft must find what it was made from.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "tests/cli/Process.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

class SuggestTest : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    static Ended zav(std::vector<std::string> arguments) {
        return Process(std::move(arguments)).locationFile(std::nullopt).run();
    }
    // The results of the draft for this path of the tree.
    Json resultsOfDraft(const std::string& subject) {
        const Ended draft = zav({"sw", "--suggest", subject, "--root", path("tree")});
        EXPECT_EQ(0, draft.status) << draft.err;
        const std::string file = scratch_.write("draft.xml", draft.out).string();
        const Ended check = zav({"sw", "--check", file});
        EXPECT_EQ(0, check.status) << check.out << draft.out;
        const Ended ended = zav({"sw", file, "--root", path("tree"), "--format", "json"});
        EXPECT_EQ(0, ended.status) << ended.err << draft.out;
        return ended.status == 0 ? Json::parse(ended.out).at("results") : Json();
    }

    ScratchDir scratch_;
};

TEST_F(SuggestTest, ScriptIsFoundByItsOwnWords) {
    scratch_.write("tree/opt/tool-2.10/bin/tool",
                   "#!/bin/sh\n# since version 1.0\necho \"tool, version 2.10.3 (x)\"\n");
    const Json results = resultsOfDraft("/opt/tool-2.10/bin/tool");
    ASSERT_EQ(1U, results.size());
    EXPECT_EQ("2.10.3", results.at(0).at("variables").at("version"));
    EXPECT_EQ("/opt/tool-2.10/bin/tool", results.at(0).at("variables").at("path"));
}

TEST_F(SuggestTest, DirectoryIsFoundByItsMetadata) {
    scratch_.write("tree/srv/app/package.json", R"({"name": "app", "version": "1.4.0"})");
    const Json results = resultsOfDraft("/srv/app");
    ASSERT_EQ(1U, results.size());
    EXPECT_EQ("1.4.0", results.at(0).at("variables").at("version"));
}

TEST_F(SuggestTest, DirectoryIsFoundByItsReleaseFile) {
    scratch_.write("tree/opt/jdk-21/release", "IMPLEMENTOR=\"X\"\nJAVA_VERSION=\"21.0.4\"\n");
    const Json results = resultsOfDraft("/opt/jdk-21");
    ASSERT_EQ(1U, results.size());
    EXPECT_EQ("21.0.4", results.at(0).at("variables").at("version"));
}

TEST_F(SuggestTest, PackagesOfASimilarNameAreListed) {
    scratch_.write("tree/usr/bin/tool", "#!/bin/sh\n");
    scratch_.write("tree/var/lib/dpkg/status",
                   "Package: tool-core\nStatus: install ok installed\nArchitecture: amd64\nVersion: 2.1\n\n"
                   "Package: toolbox\nStatus: install ok installed\nArchitecture: amd64\nVersion: 3\n\n");
    const Ended draft = zav({"sw", "--suggest", "/usr/bin/tool", "--root", path("tree")});
    EXPECT_NE(std::string::npos, draft.out.find("<Package id=\"p\" name=\"tool-core\"/> (2.1)")) << draft.out;
    EXPECT_EQ(std::string::npos, draft.out.find("toolbox")) << draft.out;
}

TEST_F(SuggestTest, WithoutAVersionTheFileAloneIsFound) {
    scratch_.write("tree/opt/plain/plain", "no number\n");
    const Json results = resultsOfDraft("/opt/plain/plain");
    ASSERT_EQ(1U, results.size());
    EXPECT_FALSE(results.at(0).at("variables").contains("version"));
}

TEST_F(SuggestTest, ProgramOfThisMachineIsFoundWithItsVersion) {
    const Ended draft = zav({"sw", "--suggest", ZAVTEST_COMMAND});
    ASSERT_EQ(0, draft.status) << draft.err;
    EXPECT_NE(std::string::npos, draft.out.find("<Elf id=\"v\"")) << draft.out;
    EXPECT_NE(std::string::npos, draft.out.find("zav [0.")) << draft.out;
}

TEST_F(SuggestTest, MissingPathIsBadUsage) {
    EXPECT_EQ(2, zav({"sw", "--suggest", path("none")}).status);
    EXPECT_EQ(2, zav({"sw", "--suggest", "/none", "--root", scratch_.path().string()}).status);
    EXPECT_EQ(2, zav({"sw", "--suggest", "/", "--list"}).status);
}

}  // namespace
}  // namespace zavtest
