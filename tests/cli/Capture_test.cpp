// Archives what a scan reads, unpacks it, and scans it again.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <nlohmann/json.hpp>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/Program.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

using Json = nlohmann::ordered_json;
namespace fs = std::filesystem;

class CaptureTest : public testing::Test {
  protected:
    Ended run(std::vector<std::string> arguments, bool asOther = false) {
        Process process(std::move(arguments));
        process.locationFile(std::nullopt).environment("TEMP", "/tmp");
        constexpr unsigned int kNobody = 65534;
        if (asOther) process.user(kNobody);
        return process.run();
    }
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    // Unpacks an archive and returns the directory.
    std::string unpacked(const std::string& archive) {
        const std::string directory = path("unpacked");
        fs::create_directory(directory);
        const Finished done = runProgram("/bin/tar", {"-C", directory, "-xf", archive});
        EXPECT_EQ(0, done.status) << done.errors;
        return directory;
    }
    // The groups in which the machine and the unpacked archive differ, apart from what only a running machine tells.
    std::string differingGroups(bool asOther) {
        fs::permissions(scratch_.path(), fs::perms::all);
        const Ended captured = run({"capture", path("m.tar.gz")}, asOther);
        EXPECT_EQ(0, captured.status) << captured.err;
        const std::string live =
            scratch_.write("live.json", run({"hw", "--format", "json"}, asOther).out).string();
        const std::string tree = unpacked(path("m.tar.gz"));
        const std::string copy =
            scratch_.write("copy.json", run({"hw", "--root", tree, "--format", "json"}, asOther).out)
                .string();
        const Json diff = Json::parse(run({"diff", live, copy, "--ignore-access", "--format", "json"}).out);
        std::string names;
        for (const auto& [group, changes] : diff.at("groups").items()) names += group + changes.dump(1);
        return names;
    }

    ScratchDir scratch_;
};

TEST_F(CaptureTest, TheUnpackedArchiveGivesTheInventoryOfThisMachine) {
    EXPECT_EQ("", differingGroups(false));
    const Json copy = Json::parse(readAll(scratch_.path() / "copy.json"));
    EXPECT_FALSE(copy.at("groups").at("Processor").empty());
    EXPECT_FALSE(copy.at("groups").at("SoftwarePackages").empty());
}

TEST_F(CaptureTest, AnotherUserThanRootArchivesWhatHeMayRead) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can scan as another user";
    EXPECT_EQ("", differingGroups(true));
}

TEST_F(CaptureTest, OnlyTheOwnerMayReadTheArchive) {
    scratch_.write("m.tar.zst", "earlier");
    fs::permissions(path("m.tar.zst"), fs::perms::all);
    ASSERT_EQ(0, run({"capture", path("m.tar.zst")}).status);
    EXPECT_EQ(fs::perms::owner_read | fs::perms::owner_write, fs::status(path("m.tar.zst")).permissions());
    EXPECT_EQ(0U, readAll(path("m.tar.zst")).find("\x28\xb5\x2f\xfd"));
}

TEST_F(CaptureTest, ArchivesOfAllFormatsAreUnpackedWithoutAComplaint) {
    scratch_.write("tree/etc/os-release", "ID=other\n");
    for (const char* const name : {"m.tar", "m.tar.gz", "m.tar.zst"}) {
        ASSERT_EQ(0, run({"capture", path(name), "--root", path("tree")}).status);
        const std::string directory = path(std::string("of-") + name);
        fs::create_directory(directory);
        const Finished done = runProgram("/bin/tar", {"-C", directory, "-xf", path(name)});
        EXPECT_EQ(0, done.status) << name;
        EXPECT_EQ("", done.errors) << name;
        EXPECT_EQ("ID=other\n", readAll(fs::path(directory) / "etc/os-release")) << name;
    }
}

TEST_F(CaptureTest, OnlyWhatTheScannerReadsIsInTheArchive) {
    scratch_.write("tree/etc/os-release", "ID=other\n");
    scratch_.write("tree/etc/secret", "secret content");
    scratch_.write("tree/home/alice/.ssh/id_rsa", "secret key");
    scratch_.write("tree/etc/passwd", "alice:x:1000:1000::/home/alice:/bin/sh\n");
    ASSERT_EQ(0, run({"capture", path("m.tar.gz"), "--root", path("tree")}).status);
    const std::string directory = unpacked(path("m.tar.gz"));
    EXPECT_EQ("ID=other\n", readAll(fs::path(directory) / "etc/os-release"));
    EXPECT_FALSE(fs::exists(fs::path(directory) / "home/alice/.ssh"));
    EXPECT_NE("secret content", readAll(fs::path(directory) / "etc/secret"));
}

TEST_F(CaptureTest, LinksStayLinks) {
    scratch_.write("tree/usr/lib/os-release", "ID=other\n");
    fs::create_directory(path("tree/etc"));
    fs::create_symlink("../usr/lib/os-release", path("tree/etc/os-release"));
    ASSERT_EQ(0, run({"capture", path("m.tar.gz"), "--root", path("tree")}).status);
    const fs::path directory = unpacked(path("m.tar.gz"));
    EXPECT_EQ("../usr/lib/os-release", fs::read_symlink(directory / "etc/os-release").string());
    EXPECT_EQ("ID=other\n", readAll(directory / "usr/lib/os-release"));
}

TEST_F(CaptureTest, HashesOfPasswordsAreLeftOut) {
    scratch_.write("tree/etc/passwd", "alice:x:1000:1000::/home/alice:/bin/sh\nbob:x:1001:1001::/:/bin/sh\n");
    scratch_.write("tree/etc/shadow", "alice:$y$hash:19000:0:99999:7:::\nbob:!$y$hash:19000:0:99999:7:::\n");
    const auto accounts = [this](const std::string& root) {
        const Json json =
            Json::parse(run({"hw", "--root", root, "--group", "UserAccountInfo", "--format", "json"}).out);
        return json.at("groups").dump();
    };
    ASSERT_EQ(0, run({"capture", path("m.tar.gz"), "--root", path("tree")}).status);
    const std::string directory = unpacked(path("m.tar.gz"));
    EXPECT_EQ("alice:x:19000:0:99999:7:::\nbob:!:19000:0:99999:7:::\n",
              readAll(fs::path(directory) / "etc/shadow"));
    EXPECT_EQ(accounts(path("tree")), accounts(directory));
}

TEST_F(CaptureTest, ASanitizedArchiveDoesNotNameTheMachineAndItsUsers) {
    scratch_.write("tree/etc/hostname", "secrethost\n");
    scratch_.write("tree/etc/hosts", "127.0.1.1 secrethost\n");
    scratch_.write("tree/etc/machine-id", "0123456789abcdef0123456789abcdef\n");
    scratch_.write("tree/etc/passwd", "secretuser:x:1000:1000::/home/secretuser:/bin/sh\n");
    scratch_.write("tree/home/secretuser/.xscreensaver", "lock: True\n");
    scratch_.write("tree/etc/os-release", "ID=other\n");
    ASSERT_EQ(0, run({"capture", path("m.tar"), "--root", path("tree"), "--sanitize"}).status);
    const std::string archive = readAll(path("m.tar"));
    EXPECT_EQ(std::string::npos, archive.find("secret"));
    EXPECT_EQ(std::string::npos, archive.find("0123456789abcdef0123"));
    const Json groups =
        Json::parse(run({"hw", "--root", unpacked(path("m.tar")), "--format", "json"}).out).at("groups");
    EXPECT_EQ("other", groups.at("OperatingSystem").at(0).at("Id"));
    EXPECT_EQ(10U, groups.at("ComponentID").at(0).at("Name").get<std::string>().size());
    ASSERT_EQ(1U, groups.at("UserAccountInfo").size());
    EXPECT_EQ(1U, groups.at("ScreenSaverInfo").size()) << "the home directory has the name of the account";
}

TEST_F(CaptureTest, AnotherNameIsRefusedBeforeTheScan) {
    const Ended ended = run({"capture", path("m.zip")});
    EXPECT_EQ(2, ended.status);
    EXPECT_EQ(
        "zav: '" + path("m.zip") + "' does not end in .tar.zst, .tar.gz or .tar (see 'zav capture --help')\n",
        ended.err);
}

TEST_F(CaptureTest, AScannerThatRecordsNothingIsReported) {
    const std::string output = scratch_.write("prepared.xml", kPreparedOutput).string();
    const Ended ended = Process({"capture", path("m.tar"), "--toolkit", scanner("copies")})
                            .environment("ZAVTEST_OUTPUT", output)
                            .run();
    EXPECT_EQ(1, ended.status);
    EXPECT_NE(std::string::npos, ended.err.find("the scanner has recorded nothing")) << ended.err;
    EXPECT_FALSE(fs::exists(path("m.tar")));
}

}  // namespace
}  // namespace zavtest
