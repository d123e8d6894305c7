#include "cli/system/Trust.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/EnvironmentVariable.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

constexpr uid_t kStranger = 65534;

class TrustTest : public testing::Test {
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
    static std::string found(const std::string& path, Leads leads = Leads::ToFile) {
        return describe(weaknessesOf(path, leads, {geteuid()}));
    }
    static bool onlyRootCanGiveAway() { return geteuid() != 0; }

    zavtest::ScratchDir scratch_;
    const mode_t before_ = umask(022);

    void TearDown() override { umask(before_); }
};

TEST_F(TrustTest, OwnFilesBehindDirectoriesOfRootAndOfOnesOwnAreSound) {
    EXPECT_EQ("", found(file("a/b/tool")));
    EXPECT_EQ("", found(path("a/b"), Leads::ToDirectory));
    EXPECT_EQ("", found(path("a/b/"), Leads::ToDirectory));
    EXPECT_EQ("", found("/tmp", Leads::ToTemporaryDirectory));
    EXPECT_EQ("", found("/", Leads::ToDirectory));
}

TEST_F(TrustTest, WhatOthersMayWriteToIsNamedWithItsRemedy) {
    const std::string tool = file("a/b/tool", 0775);
    EXPECT_EQ(tool + " can be changed by its group; 'chmod go-w " + tool + "' mends that", found(tool));
    file("a/b/tool", 0757);
    EXPECT_EQ(tool + " can be changed by all users; 'chmod go-w " + tool + "' mends that", found(tool));
}

TEST_F(TrustTest, EachDirectoryOnTheWayCounts) {
    const std::string tool = file("a/b/c/tool");
    directory("a", 0777);
    directory("a/b", 0775);
    EXPECT_EQ(path("a") + " can be changed by all users; 'chmod go-w " + path("a") + "' mends that; " +
                  path("a/b") + " can be changed by its group; 'chmod go-w " + path("a/b") + "' mends that",
              found(tool));
}

TEST_F(TrustTest, EntryOfASharedDirectoryIsSafeWhereOthersCannotRenameIt) {
    const std::string tool = file("a/b/tool");
    directory("a", 01777);
    EXPECT_EQ("", found(tool));
    EXPECT_EQ("", found(path("a/b"), Leads::ToDirectory));
    EXPECT_EQ("", found(path("a"), Leads::ToTemporaryDirectory));
    // Others could put a library beside the scanner.
    EXPECT_NE("", found(path("a"), Leads::ToDirectory));
    EXPECT_NE("", found(path("a/b/.."), Leads::ToDirectory));
}

TEST_F(TrustTest, WhatIsMissingInASharedDirectoryCanBeMadeByOthers) {
    directory("a", 01777);
    EXPECT_NE(std::string::npos,
              found(path("a/zav.ini")).find("does not exist, and other users can make it"));
    directory("a", 0755);
    EXPECT_EQ("", found(path("a/zav.ini")));
    EXPECT_EQ("", found(path("a/none/zav.ini")));
}

TEST_F(TrustTest, WhatBelongsToAnotherUserIsNamed) {
    if (onlyRootCanGiveAway()) GTEST_SKIP() << "only root can give files away";
    const std::string tool = file("a/b/tool");
    giveAway("a/b/tool");
    EXPECT_NE(std::string::npos, found(tool).find(tool + " belongs to the user "));
    EXPECT_NE(std::string::npos, found(tool).find("'chown root " + tool + "' mends that"));
    EXPECT_EQ("", describe(weaknessesOf(tool, Leads::ToFile, {geteuid(), kStranger})));
}

TEST_F(TrustTest, OwnersOfDirectoriesCountAlsoWhereTheyAreShared) {
    if (onlyRootCanGiveAway()) GTEST_SKIP() << "only root can give files away";
    const std::string tool = file("a/b/tool");
    directory("a", 01777);
    giveAway("a");
    EXPECT_EQ(0U, found(tool).find(path("a") + " belongs to"));
    EXPECT_EQ(0U, found(path("a"), Leads::ToTemporaryDirectory).find(path("a") + " belongs to"));
}

TEST_F(TrustTest, LinksAreFollowedStepByStep) {
    if (onlyRootCanGiveAway()) GTEST_SKIP() << "only root can give files away";
    file("real/bin/tool");
    directory("links");
    std::filesystem::create_symlink("../real/bin", path("links/bin"));
    std::filesystem::create_symlink(path("links"), path("start"));
    const std::string tool = path("start/bin/tool");
    EXPECT_EQ("", found(tool));
    giveAway("start");
    EXPECT_NE(std::string::npos, found(tool).find("'chown -h root " + path("start") + "' mends that"));
    std::filesystem::remove(path("start"));
    std::filesystem::create_symlink(path("links"), path("start"));
    giveAway("links");
    EXPECT_EQ(0U, found(tool).find(path("links") + " belongs to"));
    giveAway("real");
    EXPECT_NE(std::string::npos, found(tool).find(path("real") + " belongs to"));
}

TEST_F(TrustTest, LoopOfLinksHasAnEnd) {
    std::filesystem::create_symlink("b", path("a"));
    std::filesystem::create_symlink("a", path("b"));
    EXPECT_EQ("", found(path("a/tool")));
}

TEST_F(TrustTest, RemedyCanBePastedIntoAShell) {
    const std::string tool = file("it's $(mine)", 0777);
    EXPECT_NE(std::string::npos, found(tool).find("chmod go-w '" + path("it'\\''s $(mine)") + "'"));
}

TEST_F(TrustTest, UserBehindSudoIsTrustedWhereTheCommandIsHis) {
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
