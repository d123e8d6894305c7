#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>
#include <stdexcept>
#include <system_error>

#include "tests/support/ScratchDir.h"
#include "toolkit/machine/files/OutputFile.h"

namespace fs = std::filesystem;
using zavtest::readAll;

namespace toolkit {
namespace {

constexpr fs::perms kOwnersOnly = fs::perms(0600);

class OutputFile : public ::testing::Test {
  protected:
    void SetUp() override { umask_ = umask(022); }
    void TearDown() override { umask(umask_); }

    std::ptrdiff_t filesThere() const { return std::distance(fs::directory_iterator(dir_.path()), {}); }
    fs::perms modeOf(const fs::path& file) const { return fs::symlink_status(file).permissions(); }

    // The message of the exception. Fails when there is none.
    std::string refusal(const fs::path& path) const {
        try {
            writeOutputFile(path.string(), "new");
        } catch (const std::exception& failure) {
            return failure.what();
        }
        ADD_FAILURE() << path << " was written";
        return {};
    }

    // The exit status of a process that runs this.
    static int statusOf(const std::function<void()>& work) {
        const pid_t child = fork();
        if (child == 0) {
            work();
            _exit(0);
        }
        int status = -1;
        waitpid(child, &status, 0);
        return status;
    }

    bool namelessFilesAreToBeHad() const {
        const int file = open(dir_.path().c_str(), O_TMPFILE | O_WRONLY, 0600);
        if (file < 0) return false;
        close(file);
        return access("/proc/self/fd", X_OK) == 0;
    }

    zavtest::ScratchDir dir_;
    fs::path file_ = dir_.path() / "out.xml";

  private:
    mode_t umask_ = 0;
};

TEST_F(OutputFile, IsWrittenWhole) {
    writeOutputFile(file_.string(), "new");
    EXPECT_EQ(readAll(file_), "new");
    const std::string large(1 << 20, 'x');
    writeOutputFile(file_.string(), large);
    EXPECT_EQ(readAll(file_), large);
    writeOutputFile(file_.string(), [](const TextSink& sink) {
        for (const char* const piece : {"new", "", "er"}) sink(piece);
    });
    EXPECT_EQ(readAll(file_), "newer");
    EXPECT_EQ(filesThere(), 1) << "nothing else is left behind";
}

TEST_F(OutputFile, IsPrivateWhateverTheUmask) {
    for (const mode_t mask : {0U, 022U, 0277U, 0777U}) {
        umask(mask);
        fs::remove(file_);
        writeOutputFile(file_.string(), "new");
        EXPECT_EQ(modeOf(file_), kOwnersOnly) << mask;
        writeOutputFile(file_.string(), "newer");
        EXPECT_EQ(modeOf(file_), kOwnersOnly) << mask;
    }
}

TEST_F(OutputFile, TakesNeitherModeNorOwnerOfTheFileThatItReplaces) {
    for (const mode_t mode : {06777U, 04755U, 0666U, 0604U}) {
        dir_.write("out.xml", "old");
        ASSERT_EQ(chmod(file_.c_str(), mode), 0);
        if (geteuid() == 0) {
            ASSERT_EQ(chown(file_.c_str(), 4711, 4711), 0);
            ASSERT_EQ(chmod(file_.c_str(), mode), 0);
        }
        writeOutputFile(file_.string(), "new");
        struct stat status {};
        ASSERT_EQ(stat(file_.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0600U) << mode;
        EXPECT_EQ(status.st_uid, geteuid()) << mode;
    }
}

TEST_F(OutputFile, ReplacesALinkAndNotItsTarget) {
    const fs::path other = dir_.write("precious", "old");
    for (const fs::path& target : {fs::path("precious"), other, fs::path("missing"), fs::path("/dev/full")}) {
        fs::remove(file_);
        fs::create_symlink(target, file_);
        writeOutputFile(file_.string(), "new");
        EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file_))) << target;
        EXPECT_EQ(readAll(file_), "new");
        EXPECT_EQ(readAll(other), "old");
    }
    EXPECT_FALSE(fs::exists(dir_.path() / "missing"));
}

TEST_F(OutputFile, RefusesWhatIsNotAFileAtOnce) {
    const auto open = [this](const char* name) { return dir_.path() / name; };
    ASSERT_EQ(mkfifo(open("pipe").c_str(), 0666), 0);  // a pipe without a reader
    fs::create_directory(open("folder"));
    EXPECT_NE(refusal(open("pipe")).find("it is a pipe"), std::string::npos);
    EXPECT_NE(refusal(open("folder")).find("it is a directory"), std::string::npos);
    EXPECT_NE(refusal(open("folder").string() + "/").find("it is a directory"), std::string::npos);
    EXPECT_NE(refusal("/dev/full").find("it is a device"), std::string::npos);
    EXPECT_NE(refusal(open("pipe")).find(open("pipe").string()), std::string::npos) << "it is named";
    EXPECT_TRUE(fs::is_fifo(open("pipe")));
    EXPECT_TRUE(fs::is_empty(open("folder")));
    EXPECT_TRUE(fs::is_character_file("/dev/full"));
}

TEST_F(OutputFile, AStandardStreamIsNotReplaced) {
    fs::create_symlink("/proc/self/fd/1", file_);
    EXPECT_NE(refusal(file_).find("it leads to an open file"), std::string::npos);
    EXPECT_TRUE(fs::is_symlink(file_));
}

TEST_F(OutputFile, LeavesTheOldFileToItsReaders) {
    dir_.write("out.xml", "old");
    std::ifstream reader(file_);
    writeOutputFile(file_.string(), "new");
    std::string text;
    reader >> text;
    EXPECT_EQ(text, "old");
    EXPECT_EQ(readAll(file_), "new");
}

TEST_F(OutputFile, IsInTheWorkingDirectoryByDefault) {
    EXPECT_EQ(statusOf([this] {
                  fs::current_path(dir_.path());
                  writeOutputFile("out.xml", "new");
              }),
              0);
    EXPECT_EQ(readAll(file_), "new");
}

TEST_F(OutputFile, MayHaveANameOfTheMaximumLength) {
    const fs::path longest = dir_.path() / std::string(255, 'n');
    writeOutputFile(longest.string(), "new");
    writeOutputFile(longest.string(), "newer");
    EXPECT_EQ(readAll(longest), "newer");
}

TEST_F(OutputFile, IsNamedInTheErrorAndLeavesNothingIfItCannotBeWritten) {
    const fs::path blocked = dir_.write("file", "x");
    for (const fs::path& path : {dir_.path() / "missing" / "out.xml", blocked / "out.xml"})
        EXPECT_NE(refusal(path).find(path.string()), std::string::npos) << path;
    EXPECT_EQ(filesThere(), 1);
}

TEST_F(OutputFile, StaysTheOldOneIfItsContentThrows) {
    dir_.write("out.xml", "old");
    const auto write = [](const TextSink& sink) {
        sink("half of it");
        throw std::runtime_error("no more");
    };
    EXPECT_THROW(writeOutputFile(file_.string(), write), std::runtime_error);
    EXPECT_EQ(readAll(file_), "old");
    EXPECT_EQ(filesThere(), 1);
}

TEST_F(OutputFile, LeavesNothingWhenItsWriterIsKilled) {
    if (!namelessFilesAreToBeHad()) GTEST_SKIP() << "this file system has no files without names";
    for (const bool replacing : {false, true}) {
        if (replacing) dir_.write("out.xml", "old");
        const int status = statusOf([this] {
            writeOutputFile(file_.string(), [](const TextSink& sink) {
                sink(std::string(1 << 20, 'x'));
                kill(getpid(), SIGKILL);
            });
        });
        EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
        EXPECT_EQ(filesThere(), replacing ? 1 : 0);
    }
    EXPECT_EQ(readAll(file_), "old");
}

TEST_F(OutputFile, StaysTheOldOneOnAFullDisk) {
    dir_.write("out.xml", "old");
    const int status = statusOf([this] {
        // With a limit on file sizes, a write fails as on a full disk.
        const rlimit small{1000, 1000};
        signal(SIGXFSZ, SIG_IGN);
        setrlimit(RLIMIT_FSIZE, &small);
        try {
            writeOutputFile(file_.string(), std::string(100000, 'x'));
        } catch (const std::system_error&) {
            _exit(0);
        }
        _exit(1);
    });
    EXPECT_EQ(status, 0);
    EXPECT_EQ(readAll(file_), "old");
    EXPECT_EQ(filesThere(), 1);
}

}  // namespace
}  // namespace toolkit
