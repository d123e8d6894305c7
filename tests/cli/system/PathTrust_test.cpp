#include "cli/system/PathTrust.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

constexpr uid_t kStranger = 65534;

class PathTrustTest : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    std::string file(const std::string& name, mode_t mode = 0755) const {
        const std::string made = scratch_.write(name, "x").string();
        EXPECT_EQ(0, chmod(made.c_str(), mode));
        return made;
    }
    std::string directory(const std::string& name, mode_t mode = 0755) const {
        std::filesystem::create_directories(path(name));
        EXPECT_EQ(0, chmod(path(name).c_str(), mode));
        return path(name);
    }
    void giveAway(const std::string& name) const {
        EXPECT_EQ(0, lchown(path(name).c_str(), kStranger, kStranger));
    }
    static std::string found(const std::string& path, PathKind kind = PathKind::File) {
        return describe(findWeaknesses(path, kind, {geteuid()}));
    }
    static bool onlyRootCanGiveAway() { return geteuid() != 0; }

    zavtest::ScratchDir scratch_;
    const mode_t before_ = umask(022);

    void TearDown() override { umask(before_); }
};

TEST_F(PathTrustTest, OwnFilesInOwnDirectoriesAreSafe) {
    EXPECT_EQ("", found(file("a/b/tool")));
    EXPECT_EQ("", found(path("a/b"), PathKind::Directory));
    EXPECT_EQ("", found(path("a/b/"), PathKind::Directory));
    EXPECT_EQ("", found("/tmp", PathKind::TemporaryDirectory));
    EXPECT_EQ("", found("/", PathKind::Directory));
}

TEST_F(PathTrustTest, PathWritableByOthersIsReportedWithItsRemedy) {
    const std::string tool = file("a/b/tool", 0775);
    EXPECT_EQ(tool + " can be changed by its group; 'chmod go-w " + tool + "' fixes that", found(tool));
    file("a/b/tool", 0757);
    EXPECT_EQ(tool + " can be changed by all users; 'chmod go-w " + tool + "' fixes that", found(tool));
}

TEST_F(PathTrustTest, EveryDirectoryInThePathIsExamined) {
    const std::string tool = file("a/b/c/tool");
    directory("a", 0777);
    directory("a/b", 0775);
    EXPECT_EQ(path("a") + " can be changed by all users; 'chmod go-w " + path("a") + "' fixes that; " +
                  path("a/b") + " can be changed by its group; 'chmod go-w " + path("a/b") + "' fixes that",
              found(tool));
}

TEST_F(PathTrustTest, StickyDirectoryProtectsItsEntries) {
    const std::string tool = file("a/b/tool");
    directory("a", 01777);
    EXPECT_EQ("", found(tool));
    EXPECT_EQ("", found(path("a/b"), PathKind::Directory));
    EXPECT_EQ("", found(path("a"), PathKind::TemporaryDirectory));
    // Other users could add a library beside the scanner.
    EXPECT_NE("", found(path("a"), PathKind::Directory));
    EXPECT_NE("", found(path("a/b/.."), PathKind::Directory));
}

TEST_F(PathTrustTest, MissingEntryOfASharedDirectoryIsReported) {
    directory("a", 01777);
    EXPECT_NE(std::string::npos,
              found(path("a/zav.ini")).find("does not exist, and other users can create it"));
    directory("a", 0755);
    EXPECT_EQ("", found(path("a/zav.ini")));
    EXPECT_EQ("", found(path("a/none/zav.ini")));
}

TEST_F(PathTrustTest, FileOfAnotherUserIsReported) {
    if (onlyRootCanGiveAway()) GTEST_SKIP() << "only root can give files away";
    const std::string tool = file("a/b/tool");
    giveAway("a/b/tool");
    EXPECT_NE(std::string::npos, found(tool).find(tool + " belongs to the user "));
    EXPECT_NE(std::string::npos, found(tool).find("'chown root " + tool + "' fixes that"));
    EXPECT_EQ("", describe(findWeaknesses(tool, PathKind::File, {geteuid(), kStranger})));
}

TEST_F(PathTrustTest, OwnerOfAStickyDirectoryIsExamined) {
    if (onlyRootCanGiveAway()) GTEST_SKIP() << "only root can give files away";
    const std::string tool = file("a/b/tool");
    directory("a", 01777);
    giveAway("a");
    EXPECT_EQ(0U, found(tool).find(path("a") + " belongs to"));
    EXPECT_EQ(0U, found(path("a"), PathKind::TemporaryDirectory).find(path("a") + " belongs to"));
}

TEST_F(PathTrustTest, LinksAreFollowedStepByStep) {
    if (onlyRootCanGiveAway()) GTEST_SKIP() << "only root can give files away";
    file("real/bin/tool");
    directory("links");
    std::filesystem::create_symlink("../real/bin", path("links/bin"));
    std::filesystem::create_symlink(path("links"), path("start"));
    const std::string tool = path("start/bin/tool");
    EXPECT_EQ("", found(tool));
    giveAway("start");
    EXPECT_NE(std::string::npos, found(tool).find("'chown -h root " + path("start") + "' fixes that"));
    std::filesystem::remove(path("start"));
    std::filesystem::create_symlink(path("links"), path("start"));
    giveAway("links");
    EXPECT_EQ(0U, found(tool).find(path("links") + " belongs to"));
    giveAway("real");
    EXPECT_NE(std::string::npos, found(tool).find(path("real") + " belongs to"));
}

TEST_F(PathTrustTest, LoopOfLinksIsLeft) {
    std::filesystem::create_symlink("b", path("a"));
    std::filesystem::create_symlink("a", path("b"));
    EXPECT_EQ("", found(path("a/tool")));
}

TEST_F(PathTrustTest, RemedyIsQuotedForAShell) {
    const std::string tool = file("it's $(mine)", 0777);
    EXPECT_NE(std::string::npos, found(tool).find("chmod go-w '" + path("it'\\''s $(mine)") + "'"));
}

TEST_F(PathTrustTest, UserBehindSudoIsTrustedIfTheCommandIsHis) {
    if (onlyRootCanGiveAway()) GTEST_SKIP() << "only root can give files away";
    const std::string command = file("home/clone/bin/zav");
    const zavtest::EnvironmentVariable sudo("SUDO_UID", std::to_string(kStranger));
    EXPECT_EQ(std::vector<uid_t>{0}, trustedUsers(command));
    giveAway("home/clone");
    EXPECT_EQ((std::vector<uid_t>{0, kStranger}), trustedUsers(command));
    EXPECT_EQ(std::vector<uid_t>{0}, trustedUsers("/usr/bin/env"));
    for (const char* odd : {"", "nobody", "-2", "65534x", "99999999999999999999"}) {
        const zavtest::EnvironmentVariable other("SUDO_UID", odd);
        EXPECT_EQ(std::vector<uid_t>{0}, trustedUsers(command)) << odd;
    }
}

}  // namespace
}  // namespace zavcli
