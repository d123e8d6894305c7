// A small image made from scratch: some files, no package database, no operating system. The bundled scanners look at it.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/cli/Process.h"
#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvis/BinaryFiles.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;

class ImageTest : public testing::Test {
  protected:
    void SetUp() override {
        image_.write("bin/server", quorvistest::goProgram("example.com/server", "v1.2.3",
                                                          "dep\texample.com/router\tv0.4.0\th1:x=\n"));
        image_.write("srv/start.sh", "#!/bin/server\nlisten 8080\n");
        image_.write("srv/node_modules/left-pad/package.json", R"({"name": "left-pad", "version": "1.3.0"})");
    }
    Ended scan(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--root", image_.path().string()});
        return Process(std::move(arguments)).locationFile(std::nullopt).run();
    }
    static void expectSays(const std::string& text, const std::string& part) {
        EXPECT_NE(std::string::npos, text.find(part)) << part << "\nis not in\n" << text;
    }

    ScratchDir image_;
};

TEST_F(ImageTest, ItsProgramsAndPackagesAreFound) {
    const Ended ended = scan({"sw"});
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ("", ended.err);
    expectSays(ended.out, "example.com/server  1.2.3    /bin/server");
    expectSays(ended.out, "example.com/router  0.4.0    /bin/server");
    expectSays(ended.out, "left-pad            1.3.0    /srv/node_modules/left-pad  npm\n");
    EXPECT_EQ(std::string::npos, ended.out.find("start.sh")) << ended.out;
}

TEST_F(ImageTest, TheyAreInItsBillOfMaterials) {
    const Ended ended = scan({"sbom"});
    EXPECT_EQ(0, ended.status) << ended.err;
    const Json bill = Json::parse(ended.out);
    std::vector<std::string> purls;
    for (const Json& component : bill.at("components")) {
        purls.push_back(component.value("purl", ""));
        for (const Json& part : component.value("components", Json::array()))
            purls.push_back(part.value("purl", ""));
    }
    for (const char* const purl : {"pkg:golang/example.com/server@v1.2.3",
                                   "pkg:golang/example.com/router@v0.4.0", "pkg:npm/left-pad@1.3.0"})
        EXPECT_EQ(1, std::count(purls.begin(), purls.end(), purl)) << ended.out;
}

TEST_F(ImageTest, ADamagedProgramCostsAWarning) {
    image_.write("bin/broken", std::string("\x7f") + "ELF\x02\x01\x01 damaged");
    const Ended ended = scan({"sw"});
    EXPECT_EQ(0, ended.status) << ended.err;
    expectSays(ended.err, "zav: warning: /bin/broken: ");
    expectSays(ended.out, "example.com/server  1.2.3    /bin/server");
    const Json json = Json::parse(scan({"sw", "--format", "json"}).out);
    EXPECT_FALSE(json.at("complete"));
    EXPECT_EQ("file", json.at("warnings").at(0).at("scope"));
    EXPECT_EQ(3, scan({"sw", "--guid", "zav.package.go"}).status) << "the signature is asked for";
}

TEST_F(ImageTest, ManyDamagedProgramsAreCounted) {
    for (int i = 0; i < 30; ++i)
        image_.write("bin/broken" + std::to_string(i), std::string("\x7f") + "ELF\x02\x01\x01 damaged");
    const Ended ended = scan({"sw"});
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(4, std::count(ended.err.begin(), ended.err.end(), '\n')) << ended.err;
    expectSays(ended.err, " more files could not be read or understood; --details names them");
    expectSays(scan({"sw", "--details"}).err, "/bin/broken2: ");
}

TEST_F(ImageTest, ADamagedPackageDatabaseMakesTheScanDoubtful) {
    image_.write("var/lib/dpkg/status", std::string(3'000, '\x01'));
    EXPECT_EQ(3, scan({"sw"}).status);
}

// The scan of a user who may not look into some directories of the image.
class ImageOfRoot : public ImageTest {
  protected:
    void SetUp() override {
        ImageTest::SetUp();
        if (geteuid() != 0) GTEST_SKIP() << "only root can act as another user";
        if (as({"--version"}).status != 0) GTEST_SKIP() << "the build stands where other users cannot go";
        chmod(image_.path().c_str(), 0755);
        close("root", 0700);
    }
    void close(const std::string& directory, mode_t mode) {
        image_.write(directory + "/bin/server2", "");
        ASSERT_EQ(0, chmod((image_.path() / directory).c_str(), mode));
    }
    Ended as(std::vector<std::string> arguments) {
        constexpr uid_t kStranger = 65534;
        return Process(std::move(arguments)).user(kStranger).locationFile(std::nullopt).run();
    }
    Ended scanAsStranger(std::vector<std::string> arguments) {
        arguments.insert(arguments.end(), {"--root", image_.path().string()});
        return as(std::move(arguments));
    }
    static std::size_t lines(const std::string& text) {
        return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
    }
};

TEST_F(ImageOfRoot, OnePrivateDirectoryIsNamedOnce) {
    const Ended ended = scanAsStranger({"sw"});
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(2U, lines(ended.err)) << ended.err;
    expectSays(ended.err, "zav: warning: /root: No permission to search this directory\n");
    expectSays(ended.err, "zav: warning: whether the signature matches is unknown, because of permission (");
    expectSays(ended.out, " undecided; 1 warning\n");
    expectSays(ended.out, "example.com/server  1.2.3    /bin/server");
}

TEST_F(ImageOfRoot, ManyPrivateDirectoriesAreCountedInOneLineAndNamedOnRequest) {
    for (int i = 0; i < 40; ++i) close("home/user" + std::to_string(i), i % 2 == 0 ? 0700 : 0711);
    const Ended ended = scanAsStranger({"sw"});
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(1U, lines(ended.err)) << ended.err;
    expectSays(ended.err, "zav: warning: 41 files and directories may not be read or searched, so ");
    expectSays(ended.err, " signatures are undecided; root may read them; --details names them\n");
    expectSays(ended.out, " undecided; 41 warnings\n");

    const Ended details = scanAsStranger({"sw", "--details"});
    EXPECT_EQ(42U, lines(details.err)) << details.err;
    for (int i = 0; i < 40; ++i)
        expectSays(details.err, "/home/user" + std::to_string(i) + ": No permission to " +
                                    (i % 2 == 0 ? "search" : "list") + " this directory\n");
    EXPECT_EQ(std::string::npos, details.err.find("...")) << "all undecided signatures are named";
}

TEST_F(ImageOfRoot, JsonHasEachPlaceOnceAndEachUndecidedSignatureWithItsReason) {
    for (int i = 0; i < 40; ++i) close("home/user" + std::to_string(i), 0700);
    const Json json = Json::parse(scanAsStranger({"sw", "--format", "json"}).out);
    EXPECT_FALSE(json.at("complete"));
    std::vector<std::string> places;
    std::size_t unresolved = 0;
    for (const Json& warning : json.at("warnings")) {
        if (warning.at("code") == "permission") places.push_back(warning.at("path"));
        if (warning.at("code") == "unresolved") ++unresolved;
    }
    std::sort(places.begin(), places.end());
    EXPECT_EQ(41U, places.size());
    EXPECT_EQ(places.end(), std::adjacent_find(places.begin(), places.end()));
    EXPECT_EQ(json.at("undecided").size(), unresolved);
    EXPECT_LT(300U, unresolved);
    for (const Json& signature : json.at("undecided"))
        EXPECT_EQ(Json::array({"permission"}), signature.at("because")) << signature;
}

TEST_F(ImageOfRoot, ASignatureThatIsAskedForIsAGap) {
    EXPECT_EQ(3, scanAsStranger({"sw", "--guid", "zav.nginx"}).status);
    EXPECT_EQ(0, scan({"sw", "--guid", "zav.nginx"}).status) << "root sees everything";
}

TEST_F(ImageTest, AnEmptyOneHasNoSoftware) {
    const ScratchDir empty;
    const Ended ended = Process({"sw", "--root", empty.path().string()}).locationFile(std::nullopt).run();
    EXPECT_EQ(0, ended.status) << ended.err;
    EXPECT_EQ(0U, ended.out.find("no matches; ")) << ended.out;
}

}  // namespace
}  // namespace zavtest
