// Scanners and directories that the command refuses because other users could change them.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/cli/Process.h"
#include "tests/cli/Scanners.h"
#include "tests/support/ScratchDir.h"

namespace zavtest {
namespace {

constexpr uid_t kStranger = 65534;

class OwnershipTest : public testing::Test {
  protected:
    void SetUp() override {
        if (geteuid() != 0) GTEST_SKIP() << "only root can give files away";
        for (const char* name : {"quorvah", "quorvis"}) {
            std::filesystem::create_directories(tools_);
            const std::string kind = name == std::string("quorvah") ? "copies" : "answers";
            std::filesystem::copy_file(scanner(kind) + "/" + name, tools_ / name);
        }
        chmod(scratch_.path().c_str(), 0755);
    }
    Process zav(std::vector<std::string> arguments) const {
        return Process(std::move(arguments))
            .environment("ZAVTEST_OUTPUT", prepared_)
            .environment("SUDO_UID", std::nullopt)
            .locationFile(std::nullopt);
    }
    Ended hw() const { return zav({"hw", "--toolkit", tools_.string()}).run(); }
    Ended sw() const { return zav({"sw", "--toolkit", tools_.string(), signatures_}).run(); }
    Ended doctor() const { return zav({"doctor", "--toolkit", tools_.string()}).run(); }
    static void give(const std::filesystem::path& path) {
        ASSERT_EQ(0, lchown(path.c_str(), kStranger, kStranger));
    }
    static void allow(const std::filesystem::path& path, mode_t mode) {
        ASSERT_EQ(0, chmod(path.c_str(), mode));
    }
    static void expectSays(const std::string& text, const std::string& part) {
        EXPECT_NE(std::string::npos, text.find(part)) << part << "\nis not in\n" << text;
    }

    ScratchDir scratch_;
    std::filesystem::path tools_ = scratch_.path() / "a" / "tools";
    std::string prepared_ = scratch_.write("prepared.xml", kPreparedOutput).string();
    std::string signatures_ =
        scratch_.write("s.xml", "<Signatures><Signature guid=\"g\" name=\"G\"/></Signatures>").string();
};

TEST_F(OwnershipTest, ScannerThatOnlyRootCanReplaceIsStarted) {
    EXPECT_EQ(0, hw().status);
    EXPECT_EQ(0, sw().status);
    const Ended checked = doctor();
    EXPECT_EQ(0, checked.status) << checked.out;
    expectSays(checked.out, "ok       ownership: no other user can replace the scanners");
}

TEST_F(OwnershipTest, RootStartsNoScannerThatOthersCanReplace) {
    const struct {
        std::filesystem::path path;
        bool given;
        mode_t mode;
        const char* says;
    } cases[] = {
        {tools_ / "quorvah", true, 0755, " belongs to the user "},
        {tools_ / "quorvah", false, 0775, " can be changed by its group; 'chmod go-w "},
        {tools_ / "quorvah", false, 0757, " can be changed by all users; 'chmod go-w "},
        {tools_, true, 0755, " belongs to the user "},
        {tools_, false, 0777, " can be changed by all users; 'chmod go-w "},
        {tools_, false, 01777, " can be changed by all users; 'chmod go-w "},
        {tools_.parent_path(), true, 0755, " belongs to the user "},
        {tools_.parent_path(), false, 0775, " can be changed by its group; 'chmod go-w "},
    };
    for (const auto& [path, given, mode, says] : cases) {
        if (given) give(path);
        allow(path, mode);
        const Ended ended = hw();
        EXPECT_EQ(1, ended.status) << path;
        EXPECT_EQ("", ended.out);
        EXPECT_EQ(0U, ended.err.find("zav: root does not start " + (tools_ / "quorvah").string()))
            << ended.err;
        expectSays(ended.err, path.string() + says);
        const Ended checked = doctor();
        EXPECT_EQ(1, checked.status) << checked.out;
        expectSays(checked.out, "problem  ownership: " + path.string() + says);
        EXPECT_EQ(std::string::npos, checked.out.find("quorvah ran")) << checked.out;
        allow(path, 0755);
        ASSERT_EQ(0, lchown(path.c_str(), 0, 0));
        EXPECT_EQ(0, hw().status);
    }
}

TEST_F(OwnershipTest, UntrustedSoftwareScannerIsNotStartedByAnyOption) {
    give(tools_ / "quorvis");
    for (const std::vector<std::string>& more :
         {std::vector<std::string>{}, {"--check"}, {"--explain", "g"}}) {
        std::vector<std::string> arguments{"sw", "--toolkit", tools_.string(), signatures_};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Ended ended = zav(arguments).run();
        EXPECT_EQ(1, ended.status);
        EXPECT_EQ("", ended.out);
        expectSays(ended.err, "zav: root does not start " + (tools_ / "quorvis").string());
    }
    EXPECT_EQ(0, hw().status);
}

TEST_F(OwnershipTest, LinkOfAnotherUserIsRefused) {
    const auto link = scratch_.path() / "link";
    std::filesystem::create_directory_symlink(tools_, link);
    EXPECT_EQ(0, zav({"hw", "--toolkit", link.string()}).run().status);
    give(link);
    const Ended ended = zav({"hw", "--toolkit", link.string()}).run();
    EXPECT_EQ(1, ended.status);
    expectSays(ended.err, "'chown -h root " + link.string() + "' fixes that");
}

TEST_F(OwnershipTest, ScannerInAStickyDirectoryIsStarted) {
    allow(tools_.parent_path(), 01777);
    EXPECT_EQ(0, hw().status);
    allow(tools_.parent_path(), 0777);
    EXPECT_EQ(1, hw().status);
}

TEST_F(OwnershipTest, RelativeToolkitIsExaminedByItsWholePath) {
    give(tools_.parent_path());
    const Ended ended = zav({"hw", "--toolkit", "tools"}).directory(tools_.parent_path().string()).run();
    EXPECT_EQ(1, ended.status);
    expectSays(ended.err, tools_.parent_path().string() + " belongs to the user ");
}

TEST_F(OwnershipTest, LocationFileOfAnotherUserIsRefused) {
    const auto home = scratch_.path() / "home";
    std::filesystem::create_directories(home);
    std::filesystem::rename(tools_, home / "bin");
    const std::string ini = "ZAV_HomeDirectory = " + home.string() + "\n";
    EXPECT_EQ(0, zav({"hw"}).locationFile(ini).run().status);
    const Ended ended = zav({"hw"}).locationFile(ini).locationFileOwner(kStranger, 0666).run();
    EXPECT_EQ(1, ended.status);
    expectSays(ended.err, "/etc/zav/zav.ini belongs to the user ");
    expectSays(ended.err, "'chown root /etc/zav/zav.ini' fixes that");
    const Ended checked = zav({"doctor"}).locationFile(ini).locationFileOwner(kStranger, 0666).run();
    EXPECT_EQ(1, checked.status);
    expectSays(checked.out, "problem  ownership: /etc/zav/zav.ini belongs to the user ");
    expectSays(checked.out, "problem  ownership: /etc/zav/zav.ini can be changed by all users");
}

TEST_F(OwnershipTest, OtherUsersAreWarnedOnlyByTheDoctor) {
    if (zav({"--version"}).user(kStranger).run().status != 0)
        GTEST_SKIP() << "the build stands where other users cannot go";
    allow(tools_, 0777);
    const Ended ended = zav({"doctor", "--toolkit", tools_.string()}).user(kStranger).run();
    EXPECT_EQ(0, ended.status) << ended.out << ended.err;
    expectSays(ended.out, "note     ownership: " + tools_.string() + " can be changed by all users");
    EXPECT_EQ(0, zav({"hw", "--toolkit", tools_.string()}).user(kStranger).run().status);
}

TEST_F(OwnershipTest, TreeOfTheUserBehindSudoIsTrustedForItsOwnCommand) {
    const auto command = tools_ / "zav";
    std::filesystem::copy_file(ZAVTEST_COMMAND, command);
    give(tools_.parent_path());
    const auto run = [&](const std::optional<std::string>& sudo) {
        return zav({"hw"}).program(command.string()).environment("SUDO_UID", sudo).run();
    };
    EXPECT_EQ(1, run(std::nullopt).status);
    EXPECT_EQ(1, run("1").status);
    const Ended ended = run(std::to_string(kStranger));
    EXPECT_EQ(0, ended.status) << ended.err;
    // A command that belongs to root does not trust that user.
    EXPECT_EQ(1, zav({"hw", "--toolkit", tools_.string()})
                     .environment("SUDO_UID", std::to_string(kStranger))
                     .run()
                     .status);
}

TEST_F(OwnershipTest, UnsafeTemporaryDirectoryIsRefusedAndReportedByTheDoctor) {
    const auto temporary = scratch_.path() / "tmp";
    std::filesystem::create_directory(temporary);
    const auto with = [&](std::vector<std::string> arguments) {
        return zav(std::move(arguments)).environment("TEMP", temporary.string()).run();
    };
    const std::vector<std::string> scan{"hw", "--toolkit", tools_.string()};
    EXPECT_EQ(0, with(scan).status);
    allow(temporary, 0777);
    const Ended ended = with(scan);
    EXPECT_EQ(1, ended.status);
    expectSays(ended.err, "zav: the temporary directory '" + temporary.string() + "/' is not safe");
    expectSays(ended.err, "'chmod +t " + temporary.string() + "' fixes that");
    const Ended checked = with({"doctor", "--toolkit", tools_.string()});
    EXPECT_EQ(1, checked.status);
    expectSays(checked.out, "problem  temporary files: the temporary directory");
    allow(temporary, 01777);
    EXPECT_EQ(0, with(scan).status);
    give(temporary);
    EXPECT_EQ(1, with(scan).status);
}

TEST_F(OwnershipTest, ModeOfAnotherUsersFileIsNotTakenOver) {
    const auto shared = scratch_.path() / "shared";
    std::filesystem::create_directory(shared);
    allow(shared, 01777);
    const auto out = shared / "inv.json";
    scratch_.write("shared/inv.json", "");
    give(out);
    allow(out, 06777);
    EXPECT_EQ(0, zav({"hw", "--toolkit", tools_.string(), "--output", out.string()}).run().status);
    struct stat status {};
    ASSERT_EQ(0, lstat(out.c_str(), &status));
    EXPECT_EQ(0U, status.st_mode & (07000 | S_IWGRP | S_IWOTH | S_IXUSR));
    EXPECT_EQ(0U, status.st_uid);
}

}  // namespace
}  // namespace zavtest
