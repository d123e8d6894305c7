#include "cli/system/OutputFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include "cli/system/Failure.h"
#include "cli/system/SignalCleanup.h"
#include "tests/cli/OldFileSystem.h"
#include "tests/support/ScratchDir.h"

namespace zavcli {
namespace {

using zavtest::FilesStayUnnamed;
using zavtest::OldFileSystem;

class OutputFileTest : public testing::Test {
  protected:
    std::string path(const std::string& name) const { return (scratch_.path() / name).string(); }
    std::size_t fileCount() const {
        std::filesystem::directory_iterator files(scratch_.path());
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
    static std::string refusal(const std::string& file) {
        try {
            OutputFile output(file);
            output.commit("text");
        } catch (const Failure& failure) {
            EXPECT_EQ(kExitFailed, failure.status());
            return failure.what();
        }
        return "not refused";
    }

    static void expectRefusal(const std::string& file, const std::string& part) {
        const std::string text = refusal(file);
        EXPECT_NE(std::string::npos, text.find(part)) << part << "\nis not in\n" << text;
    }
    mode_t modeOf(const std::string& name) const {
        struct stat status {};
        return stat(path(name).c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
    }

    zavtest::ScratchDir scratch_;
};

TEST_F(OutputFileTest, CommittedTextIsTheWholeFile) {
    OutputFile file(path("out"));
    file.commit("new text\n");
    EXPECT_EQ("new text\n", zavtest::readAll(path("out")));
    EXPECT_EQ(1U, fileCount());
}

TEST_F(OutputFileTest, NothingIsVisibleUnderTheNameBeforeTheCommit) {
    scratch_.write("out", "old");
    const OutputFile file(path("out"));
    EXPECT_EQ("old", zavtest::readAll(path("out")));
}

TEST_F(OutputFileTest, NothingIsLeftWithoutACommit) {
    { const OutputFile file(path("out")); }
    EXPECT_EQ(0U, fileCount());
}

TEST_F(OutputFileTest, ReplacedFileKeepsItsPermissions) {
    scratch_.write("out", "old");
    std::filesystem::permissions(path("out"), std::filesystem::perms(0640));
    OutputFile file(path("out"));
    file.commit("new");
    EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(path("out")).permissions());
    EXPECT_EQ("new", zavtest::readAll(path("out")));
}

TEST_F(OutputFileTest, NewFileHasThePermissionsOfTheUmask) {
    const mode_t before = umask(027);
    OutputFile file(path("out"));
    file.commit("new");
    umask(before);
    EXPECT_EQ(std::filesystem::perms(0640), std::filesystem::status(path("out")).permissions());
}

TEST_F(OutputFileTest, ReplacedFileLosesSetIdBitsAndWritePermissionOfOthers) {
    const mode_t before = umask(022);
    scratch_.write("out", "old");
    ASSERT_EQ(0, chmod(path("out").c_str(), 06777));
    OutputFile file(path("out"));
    file.commit("new");
    umask(before);
    EXPECT_EQ(0755U, modeOf("out"));
}

TEST_F(OutputFileTest, PrivateFileIsNeverReadableForOthers) {
    scratch_.write("out", "old");
    ASSERT_EQ(0, chmod(path("out").c_str(), 0600));
    OutputFile file(path("out"));
    file.commit("new");
    EXPECT_EQ(0600U, modeOf("out"));
}

TEST_F(OutputFileTest, ModeOfAnotherUsersFileIsIgnored) {
    if (geteuid() != 0) GTEST_SKIP() << "only root can give a file away";
    const mode_t before = umask(022);
    for (const mode_t mode : {06777U, 0666U, 0600U, 0000U}) {
        scratch_.write("out", "old");
        ASSERT_EQ(0, chown(path("out").c_str(), 65534, 65534));
        ASSERT_EQ(0, chmod(path("out").c_str(), mode));
        OutputFile file(path("out"));
        file.commit("new");
        EXPECT_EQ(0644U, modeOf("out"));
        struct stat status {};
        ASSERT_EQ(0, stat(path("out").c_str(), &status));
        EXPECT_EQ(geteuid(), status.st_uid);
        EXPECT_EQ("new", zavtest::readAll(path("out")));
    }
    umask(before);
}

TEST_F(OutputFileTest, HardLinkOfTheReplacedFileKeepsTheOldContent) {
    scratch_.write("out", "old");
    std::filesystem::create_hard_link(path("out"), path("other"));
    OutputFile file(path("out"));
    file.commit("new");
    EXPECT_EQ("old", zavtest::readAll(path("other")));
}

TEST_F(OutputFileTest, SymbolicLinkIsReplacedAndNotFollowed) {
    scratch_.write("real", "old");
    for (const char* target : {"real", "missing", "."}) {
        std::filesystem::remove(path("link"));
        std::filesystem::create_symlink(target, path("link"));
        OutputFile file(path("link"));
        file.commit("new");
        EXPECT_TRUE(std::filesystem::is_regular_file(std::filesystem::symlink_status(path("link"))));
        EXPECT_EQ("new", zavtest::readAll(path("link")));
    }
    EXPECT_EQ("old", zavtest::readAll(path("real")));
    EXPECT_FALSE(std::filesystem::exists(path("missing")));
}

TEST_F(OutputFileTest, DirectoryInThePathMayBeALink) {
    std::filesystem::create_directory(path("real"));
    std::filesystem::create_symlink("real", path("link"));
    OutputFile file(path("link/out"));
    file.commit("new");
    EXPECT_EQ("new", zavtest::readAll(path("real/out")));
}

TEST_F(OutputFileTest, NamedPipeIsRefusedImmediately) {
    ASSERT_EQ(0, mkfifo(path("out").c_str(), 0666));
    expectRefusal(path("out"), "it is a named pipe; to write to standard output");
    EXPECT_TRUE(std::filesystem::is_fifo(path("out")));
}

TEST_F(OutputFileTest, DeviceAndLinkToADeviceAreRefused) {
    expectRefusal("/dev/null", "it is a device; to write to standard output");
    std::filesystem::create_symlink("/dev/null", path("link"));
    expectRefusal(path("link"), "it leads to a device; to write to standard output");
    EXPECT_TRUE(std::filesystem::is_symlink(path("link")));
}

TEST_F(OutputFileTest, NamesOfStandardOutputAreRefusedWithTheAlternative) {
    for (const char* name : {"/dev/stdout", "/proc/self/fd/1", "/proc/thread-self/fd/1", "/dev/fd"}) {
        if (!std::filesystem::exists(std::filesystem::symlink_status(name))) continue;
        expectRefusal(name, "to write to standard output, omit --output or use '--output -'");
    }
    EXPECT_NE("not refused", refusal("/dev/fd/1"));
    // Two links lead to the open file.
    std::filesystem::create_symlink("/dev/stdout", path("link"));
    expectRefusal(path("link"), "it is an open file of a process");
}

TEST_F(OutputFileTest, PipeThatAppearsLaterIsReplacedWithoutBlocking) {
    OutputFile file(path("out"));
    ASSERT_EQ(0, mkfifo(path("out").c_str(), 0666));
    file.commit("new");
    EXPECT_TRUE(std::filesystem::is_regular_file(path("out")));
}

TEST_F(OutputFileTest, MovedDirectoryKeepsTheFile) {
    std::filesystem::create_directory(path("d"));
    std::filesystem::create_directory(path("trap"));
    OutputFile file(path("d/out"));
    std::filesystem::rename(path("d"), path("moved"));
    std::filesystem::create_symlink("trap", path("d"));
    file.commit("new");
    EXPECT_EQ("new", zavtest::readAll(path("moved/out")));
    EXPECT_TRUE(std::filesystem::is_empty(path("trap")));
}

TEST_F(OutputFileTest, NothingIsVisibleBeforeTheCommit) {
    const OutputFile file(path("out"));
    EXPECT_EQ(0U, fileCount());
}

TEST_F(OutputFileTest, NamedFileIsUsedWithoutSupportForUnnamedFiles) {
    const OldFileSystem old;
    scratch_.write("out", "old");
    ASSERT_EQ(0, chmod(path("out").c_str(), 0600));
    {
        OutputFile file(path("out"));
        EXPECT_EQ(2U, fileCount());
        file.commit("new");
    }
    EXPECT_EQ("new", zavtest::readAll(path("out")));
    EXPECT_EQ(0600U, modeOf("out"));
    { const OutputFile abandoned(path("out")); }
    EXPECT_EQ(1U, fileCount());
}

TEST_F(OutputFileTest, UnnamedFileThatCannotBeNamedIsWrittenAgain) {
    const FilesStayUnnamed unnamed;
    OutputFile file(path("out"));
    file.commit("new");
    EXPECT_EQ("new", zavtest::readAll(path("out")));
    EXPECT_EQ(1U, fileCount());
}

TEST_F(OutputFileTest, SignalRemovesTheNamedFile) {
    const pid_t child = fork();
    if (child == 0) {
        installSignalCleanup();
        const OldFileSystem old;
        const OutputFile file(path("out"));
        if (fileCount() == 1) raise(SIGUSR1);
        _exit(1);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGUSR1) << status;
    EXPECT_EQ(0U, fileCount());
}

TEST_F(OutputFileTest, LongestNameCanBeWritten) {
    const std::string name(255, 'n');
    OutputFile file(path(name));
    file.commit("new");
    EXPECT_EQ("new", zavtest::readAll(path(name)));
}

TEST_F(OutputFileTest, ReadOnlyFileIsNotReplaced) {
    if (geteuid() == 0) GTEST_SKIP() << "root may write to every file";
    scratch_.write("out", "old");
    ASSERT_EQ(0, chmod(path("out").c_str(), 0444));
    expectRefusal(path("out"), "Permission denied");
}

TEST_F(OutputFileTest, MissingDirectoryIsReported) {
    const std::string file = path("none/out");
    EXPECT_EQ("cannot write '" + file + "': No such file or directory", refusal(file));
}

TEST_F(OutputFileTest, DirectoryIsRefused) {
    for (const std::string& name : {scratch_.path().string(), path("."), path(".."), path("")})
        expectRefusal(name, "cannot write '" + name + "': it is a directory");
    expectRefusal("", "cannot write '': it has no name");
}

}  // namespace
}  // namespace zavcli
