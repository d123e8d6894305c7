#include "toolkit/machine/files/Recorder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>

#include "tests/support/ScratchDir.h"

namespace toolkit {
namespace {

using zavtest::readAll;
using zavtest::ScratchDir;

struct Entry {
    unsigned mode = 0;
    std::string content;
    bool denied = false;  // whether an entry has no permissions
};

// The entries of a record by their path; of several, the one with the longest content.
std::map<std::string, Entry> entriesOf(const std::string& record) {
    std::map<std::string, Entry> entries;
    constexpr std::size_t kHeader = 110;
    for (std::size_t at = 0;;) {
        if (record.compare(at, 6, "070701") != 0 || at + kHeader > record.size())
            throw std::runtime_error("no entry at " + std::to_string(at));
        const auto field = [&](std::size_t index) {
            return static_cast<unsigned>(std::stoul(record.substr(at + 6 + 8 * index, 8), nullptr, 16));
        };
        const unsigned size = field(6);
        const unsigned pathSize = field(11);
        const std::string path = record.substr(at + kHeader, pathSize - 1);
        const std::size_t begin = (at + kHeader + pathSize + 3) / 4 * 4;
        if (path == "TRAILER!!!") return entries;
        Entry& entry = entries[path];
        const unsigned mode = field(1);
        if (entry.mode == 0 || size > entry.content.size()) {
            entry.mode = mode;
            entry.content = record.substr(begin, size);
        }
        entry.denied = entry.denied || (mode & 0777U) == 0;
        at = (begin + size + 3) / 4 * 4;
    }
}

class RecorderTest : public testing::Test {
  protected:
    void open(const std::string& path, int flags = O_RDONLY,
              std::optional<Recorder::Clock::time_point> deadline = std::nullopt) {
        const kest::Descriptor file(
            ::open((tree_.path().string() + path).c_str(), flags | O_NONBLOCK | O_CLOEXEC));
        recorder_.noteOpened(path, flags, file, file.isOpen() ? 0 : errno, deadline);
    }
    std::map<std::string, Entry> entries() {
        EXPECT_EQ("", recorder_.finish());
        return entriesOf(readAll(record_));
    }

    static constexpr unsigned kKind = 0170000;
    ScratchDir tree_;
    ScratchDir place_;
    std::string record_ = (place_.path() / "record").string();
    Recorder recorder_{record_, tree_.path().string(), [](std::string_view path, std::string content) {
                           return path == "/secret" ? std::string("hidden") : content;
                       }};
};

TEST_F(RecorderTest, AFileIsWrittenDownWithTheDirectoriesOnTheWay) {
    tree_.write("proc/cpuinfo", "processor\t: 0\n");
    open("/proc/cpuinfo");
    const auto found = entries();
    ASSERT_EQ(2U, found.size());
    EXPECT_EQ(static_cast<unsigned>(S_IFDIR), found.at("proc").mode & kKind);
    EXPECT_EQ("processor\t: 0\n", found.at("proc/cpuinfo").content);
    EXPECT_EQ(static_cast<unsigned>(S_IFREG), found.at("proc/cpuinfo").mode & kKind);
}

TEST_F(RecorderTest, AListingHasTheNamesOfFilesThatWereNotRead) {
    tree_.write("sys/a", "content");
    tree_.write("sys/b/c", "content");
    tree_.link("sys/link", "a");
    open("/sys", O_RDONLY | O_DIRECTORY);
    const auto found = entries();
    ASSERT_EQ(4U, found.size());
    EXPECT_EQ("", found.at("sys/a").content);
    EXPECT_EQ(static_cast<unsigned>(S_IFDIR), found.at("sys/b").mode & kKind);
    EXPECT_EQ("a", found.at("sys/link").content);
}

TEST_F(RecorderTest, LinksOnTheWayAreKeptAndStayInTheTree) {
    tree_.write("data/value", "7");
    tree_.link("absolute", "/data");
    tree_.link("up", "../../../../absolute");
    open("/data/value");
    const kest::Descriptor file(::open((tree_.path() / "data/value").c_str(), O_RDONLY | O_CLOEXEC));
    recorder_.noteOpened("/up/value", O_RDONLY, file, 0);
    const auto found = entries();
    EXPECT_EQ("../../../../absolute", found.at("up").content);
    EXPECT_EQ("/data", found.at("absolute").content);
    EXPECT_EQ("7", found.at("data/value").content);
}

TEST_F(RecorderTest, LinksInACircleEnd) {
    tree_.link("one", "two");
    tree_.link("two", "one");
    open("/one/file");
    EXPECT_EQ(2U, entries().size());
}

TEST_F(RecorderTest, ContentsAreFiltered) {
    tree_.write("secret", "password");
    open("/secret");
    EXPECT_EQ("hidden", entries().at("secret").content);
    EXPECT_EQ(std::string::npos, readAll(record_).find("password"));
}

TEST_F(RecorderTest, ADeniedFileHasNoPermissionsAndNoContent) {
    tree_.write("etc/shadow", "root:*\n");
    recorder_.noteOpened("/etc/shadow", O_RDONLY, kest::Descriptor(), EACCES);
    const auto found = entries();
    EXPECT_EQ("", found.at("etc/shadow").content);
    EXPECT_TRUE(found.at("etc/shadow").denied);
    EXPECT_FALSE(found.at("etc").denied);
}

TEST_F(RecorderTest, AMissingFileLeavesNothing) {
    open("/missing");
    EXPECT_TRUE(entries().empty());
}

TEST_F(RecorderTest, APipeIsANameAndIsNotRead) {
    ASSERT_EQ(0, ::mkfifo((tree_.path() / "pipe").c_str(), 0600));
    open("/pipe");
    EXPECT_EQ("", entries().at("pipe").content);
}

TEST_F(RecorderTest, AfterTheDeadlineNothingIsRead) {
    tree_.write("late", "content");
    tree_.write("directory/name", "content");
    const auto past = Recorder::Clock::now() - std::chrono::seconds(1);
    open("/late", O_RDONLY, past);
    open("/directory", O_RDONLY | O_DIRECTORY, past);
    const auto found = entries();
    EXPECT_EQ("", found.at("late").content);
    EXPECT_FALSE(found.contains("directory/name"));
}

TEST_F(RecorderTest, WhatWasCutOffByADeadlineIsReadLater) {
    tree_.write("file", "content");
    open("/file", O_RDONLY, Recorder::Clock::now() - std::chrono::seconds(1));
    open("/file", O_RDONLY, Recorder::Clock::now() + std::chrono::hours(1));
    EXPECT_EQ("content", entries().at("file").content);
}

TEST_F(RecorderTest, EntriesOfSeveralProcessesDoNotMix) {
    constexpr int kFiles = 50;
    for (int i = 0; i < 4 * kFiles; ++i)
        tree_.write("f" + std::to_string(i), std::string(static_cast<std::size_t>(1000 + i), 'x'));
    for (int child = 0; child < 4; ++child) {
        if (::fork() != 0) continue;
        for (int i = 0; i < kFiles; ++i) open("/f" + std::to_string(child * kFiles + i));
        ::_exit(0);
    }
    while (::wait(nullptr) > 0) continue;
    const auto found = entries();
    ASSERT_EQ(4U * kFiles, found.size());
    for (int i = 0; i < 4 * kFiles; ++i)
        EXPECT_EQ(1000U + static_cast<unsigned>(i), found.at("f" + std::to_string(i)).content.size());
}

TEST_F(RecorderTest, ARecordThatCannotBeWrittenWholeIsReported) {
    tree_.write("large", std::string(100'000, 'x'));
    const pid_t child = ::fork();
    if (child == 0) {
        (void)::signal(SIGXFSZ, SIG_IGN);
        const rlimit small{4096, 4096};
        if (::setrlimit(RLIMIT_FSIZE, &small) != 0) ::_exit(2);
        open("/large");
        ::_exit(recorder_.finish() == "writing the record failed" ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
}

TEST_F(RecorderTest, AnExistingFileIsNotOverwritten) {
    EXPECT_THROW(Recorder(record_, "/", nullptr), std::system_error);
}

}  // namespace
}  // namespace toolkit
