#include "core/NewFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "kest/Text.h"
#include "tests/support/Child.h"
#include "tests/support/ScratchDir.h"

namespace zav::test {
namespace {

class NewFileTest : public testing::Test {
  protected:
    WriteResult write(const std::filesystem::path& path, const std::string& text = "text") {
        told_.clear();
        return writeNewFile(
            kest::widen(path.string()),
            [&text](std::FILE* file) {
                return std::fwrite(text.data(), 1, text.size(), file) == text.size();
            },
            told_);
    }
    std::filesystem::path path() const { return directory_.path() / "file"; }
    const std::string& told() const { return told_; }

    const zavtest::ScratchDir directory_;
    std::string told_;
};

TEST_F(NewFileTest, HasOwnerPermissionsOnlyForAnyUmask) {
    for (const mode_t mask : {0000U, 0022U, 0777U}) {
        std::filesystem::remove(path());
        const mode_t before = umask(mask);
        EXPECT_EQ(write(path()), WriteResult::kComplete);
        umask(before);
        struct stat status = {};
        ASSERT_EQ(stat(path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777U, 0600U) << mask;
        EXPECT_EQ(zavtest::readAll(path()), "text");
    }
}

TEST_F(NewFileTest, ReplacesWhatAFileHeld) {
    directory_.write("file", "something longer");
    EXPECT_EQ(write(path()), WriteResult::kComplete);
    EXPECT_EQ(zavtest::readAll(path()), "text");
}

TEST_F(NewFileTest, IsNotWrittenThroughALink) {
    const auto target = directory_.write("target", "kept");
    std::filesystem::create_symlink(target, path());
    EXPECT_EQ(write(path()), WriteResult::kNotCreated);
    EXPECT_EQ(zavtest::readAll(target), "kept");
    EXPECT_EQ(told(), "Cannot make [" + path().string() + "]: ELOOP (too many levels of symbolic links)");
    std::filesystem::remove(path());
    std::filesystem::create_symlink(directory_.path() / "none", path());
    EXPECT_EQ(write(path()), WriteResult::kNotCreated);
    EXPECT_FALSE(std::filesystem::exists(directory_.path() / "none"));
}

TEST_F(NewFileTest, NeverWaitsForAPipe) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(write(path()), WriteResult::kNotCreated);
    EXPECT_EQ(told(), "Cannot make [" + path().string() + "]: ENXIO (no such device or address)");
    const int reader = ::open(path().c_str(), O_RDONLY | O_NONBLOCK);
    EXPECT_EQ(write(path()), WriteResult::kNotCreated);
    EXPECT_EQ(told(), "Cannot make [" + path().string() + "]: EEXIST (file exists)");
    EXPECT_EQ(::close(reader), 0);
}

TEST_F(NewFileTest, ReportsWhyItCannotBeCreated) {
    EXPECT_EQ(write(directory_.path() / "none" / "caf\xC3\xA9"), WriteResult::kNotCreated);
    EXPECT_EQ(told(), "Cannot make [" + directory_.path().string() +
                          "/none/caf\\xC3\\xA9]: ENOENT (no such file or directory)");
}

TEST_F(NewFileTest, ReportsWhyItCannotBeWritten) {
    EXPECT_EQ(write("/dev/full"), WriteResult::kFailed);
    EXPECT_EQ(told(), "Cannot write [/dev/full]: ENOSPC (no space left on device)");
    told_.clear();
    EXPECT_EQ(writeNewFile(
                  kest::widen(path().string()), [](std::FILE*) { return false; }, told_),
              WriteResult::kFailed);
    EXPECT_EQ(told(), "Cannot write [" + path().string() + "]: a text of it is null");
}

// The signal of the failed write would end the process by default.
TEST_F(NewFileTest, BeyondTheLimitForFilesIsAFailedWrite) {
    for (const std::size_t size : {std::size_t{100}, std::size_t{100'000}}) {
        EXPECT_TRUE(zavtest::holdsInChild([&] {
            const rlimit limit = {50, 50};
            setrlimit(RLIMIT_FSIZE, &limit);
            const bool failed = write(path(), std::string(size, 'x')) == WriteResult::kFailed;
            sigset_t pending;
            sigset_t blocked;
            sigpending(&pending);
            pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
            return failed && sigisemptyset(&pending) && sigisemptyset(&blocked) &&
                   told() == "Cannot write [" + path().string() + "]: EFBIG (file too large)";
        })) << size;
    }
}

TEST_F(NewFileTest, KeepsAPendingSignalOfTheHost) {
    EXPECT_TRUE(zavtest::holdsInChild([this] {
        sigset_t own;
        sigemptyset(&own);
        sigaddset(&own, SIGXFSZ);
        pthread_sigmask(SIG_BLOCK, &own, nullptr);
        raise(SIGXFSZ);
        const rlimit limit = {50, 50};
        setrlimit(RLIMIT_FSIZE, &limit);
        const bool failed = write(path(), std::string(100, 'x')) == WriteResult::kFailed;
        sigset_t pending;
        sigpending(&pending);
        return failed && sigismember(&pending, SIGXFSZ) == 1;
    }));
}

TEST_F(NewFileTest, RefusesToReadAPipe) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    EXPECT_EQ(openForReading(path().c_str()), nullptr);
    EXPECT_NE(openForReading("/dev/null"), nullptr);
}

}  // namespace
}  // namespace zav::test
