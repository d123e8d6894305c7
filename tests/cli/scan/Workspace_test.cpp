#include "cli/scan/Workspace.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "cli/system/Failure.h"
#include "tests/support/EnvironmentVariable.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

class WorkspaceTest : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    static std::string refusal() {
        try {
            const Workspace workspace;
            return "";
        } catch (const Failure& failure) {
            EXPECT_EQ(kExitFailed, failure.status());
            return failure.what();
        }
    }
    // A directory as a killed process leaves it behind.
    std::string abandoned(const std::string& ending) const {
        std::string boot;
        std::ifstream("/proc/sys/kernel/random/boot_id") >> boot;
        std::string made = path("zav-" + boot.substr(0, 8) + "-" + ending);
        std::filesystem::create_directories(made + "/zav_1/quorvah_2");
        std::ofstream(made + "/zav_1/quorvah_2/output") << "half";
        EXPECT_EQ(0, chmod(made.c_str(), 0700));
        return made;
    }

    zavtest::ScratchDir scratch_;
    const zavtest::EnvironmentVariable temporary_{"TEMP", scratch_.path().string()};
};

TEST_F(WorkspaceTest, IsPrivateWithEveryUmask) {
    for (const mode_t mask : {0U, 022U, 0777U}) {
        const mode_t before = umask(mask);
        const Workspace workspace;
        umask(before);
        EXPECT_EQ(scratch_.path(), std::filesystem::path(workspace.path()).parent_path());
        EXPECT_EQ(std::filesystem::perms::owner_all, std::filesystem::status(workspace.path()).permissions());
    }
}

TEST_F(WorkspaceTest, IsRemovedWithItsContentWithoutFollowingLinks) {
    scratch_.write("outside/precious", "x");
    {
        const Workspace workspace;
        std::filesystem::create_directories(workspace.path() + "/a/b/c");
        std::ofstream(workspace.path() + "/a/b/c/file") << "x";
        for (int i = 0; i < 300; ++i) std::ofstream(workspace.path() + "/file" + std::to_string(i)) << i;
        std::filesystem::create_symlink(path("outside"), workspace.path() + "/a/link");
    }
    EXPECT_TRUE(std::filesystem::exists(path("outside/precious")));
    std::filesystem::remove_all(path("outside"));
    EXPECT_TRUE(std::filesystem::is_empty(scratch_.path()));
}

TEST_F(WorkspaceTest, AbandonedDirectoriesAreRemoved) {
    abandoned("abcdef");
    abandoned("ghijkl");
    { const Workspace workspace; }
    EXPECT_TRUE(std::filesystem::is_empty(scratch_.path()));
}

TEST_F(WorkspaceTest, DirectoriesThatMayBeInUseAreKept) {
    // The directory of a running process.
    const std::string locked = abandoned("locked");
    const int lock = open(locked.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    ASSERT_EQ(0, flock(lock, LOCK_EX | LOCK_NB));
    // A link to another directory, and a directory that other users may use.
    scratch_.write("elsewhere/file", "x");
    std::filesystem::create_symlink("elsewhere",
                                    path(std::filesystem::path(abandoned("x")).filename().string() + "link"));
    const std::string open = abandoned("open");
    ASSERT_EQ(0, chmod(open.c_str(), 0755));
    // Directories of other machines, and of other programs that use the library.
    scratch_.write("zav-00000000-abcdef/file", "x");
    scratch_.write("zav_1234512ABCDEF_33/file", "x");
    { const Workspace workspace; }
    for (const std::string& kept : {locked, open, path("elsewhere/file"), path("zav-00000000-abcdef/file"),
                                    path("zav_1234512ABCDEF_33/file")})
        EXPECT_TRUE(std::filesystem::exists(kept)) << kept;
    close(lock);
}

TEST_F(WorkspaceTest, DirectoryOfAnotherUserIsKept) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give a directory away";
    const std::string other = abandoned("other");
    ASSERT_EQ(0, chown(other.c_str(), 65534, 65534));
    { const Workspace workspace; }
    EXPECT_TRUE(std::filesystem::exists(other));
}

TEST_F(WorkspaceTest, DirectoryInWhichOthersMayRenameIsRefused) {
    for (const mode_t mode : {0777U, 0775U, 0773U}) {
        ASSERT_EQ(0, chmod(scratch_.path().c_str(), mode));
        const std::string text = refusal();
        EXPECT_EQ(0U, text.find("the temporary directory '" + scratch_.path().string() + "/' is not safe"))
            << text;
        EXPECT_NE(std::string::npos, text.find("'chmod +t " + scratch_.path().string() + "' fixes that"))
            << text;
    }
    for (const mode_t mode : {01777U, 01770U, 0755U, 0700U}) {
        ASSERT_EQ(0, chmod(scratch_.path().c_str(), mode));
        EXPECT_EQ("", refusal());
    }
}

TEST_F(WorkspaceTest, DirectoryBelowOneInWhichOthersMayRenameIsRefused) {
    std::filesystem::create_directories(path("shared/mine"));
    ASSERT_EQ(0, chmod(path("shared").c_str(), 0777));
    const zavtest::EnvironmentVariable below("TEMP", path("shared/mine"));
    EXPECT_NE(std::string::npos, refusal().find(path("shared") + " can be changed by all users"));
}

TEST_F(WorkspaceTest, DirectoryOfAnotherUserIsRefused) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give a directory away";
    ASSERT_EQ(0, chmod(scratch_.path().c_str(), 01777));
    ASSERT_EQ(0, chown(scratch_.path().c_str(), 65534, 65534));
    EXPECT_NE(std::string::npos, refusal().find("belongs to the user"));
    ASSERT_EQ(0, chown(scratch_.path().c_str(), 0, 0));
}

TEST(TemporaryDirectory, IsTempElseTmpElseTheDefault) {
    const struct {
        std::optional<std::string> temp;
        std::optional<std::string> tmp;
        const char* path;
    } cases[] = {{"/a", "/b", "/a"},
                 {std::nullopt, "/b//c", "/b/c"},
                 {std::nullopt, std::nullopt, "/tmp"},
                 {"", "/b", ""},
                 {"/gr\xc3\xb6\xc3\x9f///", std::nullopt, "/gr\xc3\xb6\xc3\x9f/"}};
    for (const auto& [temp, tmp, path] : cases) {
        const zavtest::EnvironmentVariable first("TEMP", temp);
        const zavtest::EnvironmentVariable second("TMP", tmp);
        EXPECT_EQ(path, temporaryDirectory());
    }
}

}  // namespace
}  // namespace zavcli
