#include "toolkit/quorvis/files/Files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvis/files/Disclosure.h"

// Wraps pread(), so that a test can change the file between two reads.
static std::function<void()> beforeReading;
extern "C" ssize_t __real_pread(int file, void* buffer, std::size_t size, off_t offset);
extern "C" ssize_t __wrap_pread(int file, void* buffer, std::size_t size, off_t offset) {
    if (beforeReading) beforeReading();
    return __real_pread(file, buffer, size, offset);
}

namespace toolkit::quorvis {
namespace {

namespace fs = std::filesystem;
constexpr std::uint64_t kPlenty = std::uint64_t{1} << 20;

// With and without support of the kernel for resolving paths within the tree.
class FilesTest : public ::testing::TestWithParam<Root::Lookup> {
  protected:
    FilesTest() : root_(tree_.path().string(), GetParam()), files_(root_, settings_) {}

    fs::path at(const std::string& path) const { return tree_.path() / path; }
    void link(const std::string& target, const std::string& path) {
        fs::create_directories(at(path).parent_path());
        fs::create_symlink(target, at(path));
    }
    std::string text(const std::string& path, std::uint64_t limit = kPlenty) {
        const Files::Content content = files_.read(path, limit);
        return content.access == Access::Ok ? *content.bytes : "?";
    }
    static void expectFailure(const Files::Content& content, EventCode code) {
        EXPECT_EQ(Access::Failed, content.access);
        EXPECT_EQ(nullptr, content.bytes);
        ASSERT_TRUE(content.event);
        EXPECT_EQ(code, content.event->code);
    }

    zavtest::ScratchDir tree_;
    Settings settings_;
    Root root_;
    Files files_;
};

INSTANTIATE_TEST_SUITE_P(, FilesTest, ::testing::Values(Root::Lookup::Kernel, Root::Lookup::ByComponent),
                         [](const auto& tested) {
                             return tested.param == Root::Lookup::Kernel ? "Kernel" : "ByComponent";
                         });

TEST_P(FilesTest, FollowsLinksToTheFile) {
    tree_.write("usr/bin/dash", "#!");
    ASSERT_EQ(0, chmod(at("usr/bin/dash").c_str(), 04751));
    link("/usr/bin", "bin");
    link("dash", "usr/bin/sh");
    const Files::Facts facts = files_.look("/bin/sh");
    ASSERT_EQ(Access::Ok, facts.access);
    struct stat status {};
    ASSERT_EQ(0, stat(at("usr/bin/dash").c_str(), &status));
    EXPECT_EQ(FileFacts::Kind::File, facts.facts.kind);
    EXPECT_EQ(2U, facts.facts.size);
    EXPECT_EQ(04751U, facts.facts.mode);
    EXPECT_EQ(status.st_uid, facts.facts.owner);
    EXPECT_EQ(status.st_mtime, facts.facts.modified);
    EXPECT_EQ(status.st_dev, facts.facts.device);
    EXPECT_EQ(status.st_ino, facts.facts.inode);
    EXPECT_EQ(FileFacts::Kind::Link, files_.lookAtLink("/bin/sh").facts.kind);
    EXPECT_EQ(FileFacts::Kind::Directory, files_.look("/bin").facts.kind);
    EXPECT_EQ("/usr/bin/dash", files_.withoutLinks("/bin/sh"));
    EXPECT_EQ("/", files_.withoutLinks("/../.."));
    EXPECT_EQ("/no/such", files_.withoutLinks("/no/such"));
    EXPECT_EQ("dash", files_.linkText("/bin/sh"));
    EXPECT_EQ("", files_.linkText("/usr/bin/dash"));
}

TEST_P(FilesTest, MissingFilesAreMissing) {
    tree_.write("f", "");
    link("/nowhere", "dangling");
    for (const std::string& path :
         {std::string("/x"), std::string("/f/x"), std::string("/dangling"), "/" + std::string(300, 'x')}) {
        EXPECT_EQ(Access::Missing, files_.look(path).access) << path;
        const Files::Content content = files_.read(path, kPlenty);
        EXPECT_EQ(Access::Missing, content.access) << path;
        EXPECT_FALSE(content.event) << path;
    }
}

TEST_P(FilesTest, PathsMustBeAbsoluteAndStayInTheTree) {
    const zavtest::ScratchDir outside;
    outside.write("secret", "secret");
    tree_.write("etc/f", "inside");
    link(outside.path().string(), "absolute");
    link("../../../../../../../.." + outside.path().string(), "relative");
    EXPECT_EQ("inside", text("/../../etc/../../etc/f"));
    EXPECT_EQ("?", text("/absolute/secret"));
    EXPECT_EQ("?", text("/relative/secret"));
    EXPECT_EQ("?", text("/.." + outside.path().string() + "/secret"));
    expectFailure(files_.read("etc/f", kPlenty), EventCode::Unsupported);
    expectFailure(files_.read("", kPlenty), EventCode::Unsupported);
    expectFailure(files_.read(std::string("/etc/f\0x", 8), kPlenty), EventCode::Unsupported);
}

// Whatever was found before, a path leads to the same file.
TEST_P(FilesTest, ThePathsBeforeDoNotMatter) {
    tree_.write("a/b/c/f", "deep");
    tree_.write("a/b/g", "near");
    tree_.write("file", "top");
    link("../a/b", "other/ab");
    link("/a", "absolute");
    link("../a/b/g", "other/g");  // the same name in another directory
    link("../a/b/c/f", "other/f");
    const std::vector<std::string> paths = {"/a/b/c/f",
                                            "/a/b/g",
                                            "/a/b/c/../g",
                                            "/a//b/g",
                                            "/a/./b/g",
                                            "/a/b/c",
                                            "/a/b",
                                            "/a/b/",
                                            "/other/ab",
                                            "/other/ab/g",
                                            "/other/ab/../b/g",
                                            "/file/x",
                                            "/file/.",
                                            "/file/..",
                                            "/file",
                                            "/",
                                            "/a/b/c/f/",
                                            "/absolute/b/g",
                                            "/absolute",
                                            "/missing",
                                            "/a/x/y",
                                            "/../../file",
                                            "/a/b/../..",
                                            "/other/ab/c",
                                            "/other/g",
                                            "/other/f",
                                            "/other/ab/.",
                                            "/other/ab/..",
                                            "/other/ab/missing",
                                            "/other/ab/c/f"};
    const auto describe = [](const Files::Facts& found) {
        return std::to_string(static_cast<int>(found.access)) + " " +
               std::to_string(static_cast<int>(found.facts.kind)) + " " + std::to_string(found.facts.inode) +
               " " + std::to_string(found.facts.atLink ? 1 : 0);
    };
    for (const std::string& before : paths) {
        for (const std::string& path : paths) {
            Files fresh(root_, settings_);
            const std::string expected = describe(fresh.look(path)) + describe(fresh.lookAtLink(path)) +
                                         fresh.withoutLinks(path) + fresh.linkText(path);
            files_.look(before);
            std::string found = describe(files_.look(path));
            files_.open(before);
            found += describe(files_.lookAtLink(path)) + files_.withoutLinks(path);
            files_.withoutLinks(before);
            found += files_.linkText(path);
            EXPECT_EQ(expected, found) << path << " after " << before;
        }
    }
}

TEST_P(FilesTest, ManyFilesBehindALinkAreFoundInItsPlace) {
    link("usr/bin", "bin");
    for (const char* const name : {"a", "b", "c"}) tree_.write("usr/bin/" + std::string(name), name);
    tree_.write("etc/b", "other");
    link("../../etc/b", "usr/bin/linked");
    for (const char* const name : {"a", "linked", "b", "c", "missing", "a"}) {
        const std::string path = std::string("/bin/") + name;
        EXPECT_EQ(Files(root_, settings_).look(path).facts.inode, files_.look(path).facts.inode) << path;
        EXPECT_EQ(Files(root_, settings_).withoutLinks(path), files_.withoutLinks(path)) << path;
    }
    EXPECT_EQ("/usr/bin/b", files_.withoutLinks("/bin/b"));
}

TEST_P(FilesTest, AnotherDirectoryInThePlaceOfAnEarlierOneIsFoundSoon) {
    tree_.write("a/b/f", "old");
    EXPECT_EQ(Access::Ok, files_.look("/a/b/f").access);
    fs::rename(at("a/b"), at("a/moved"));
    tree_.write("a/b/f", "newer");
    std::this_thread::sleep_for(std::chrono::milliseconds(600));
    EXPECT_EQ(5U, files_.look("/a/b/f").facts.size);
}

TEST_P(FilesTest, CircularLinksFail) {
    link("b", "a");
    link("a", "b");
    const Files::Facts facts = files_.look("/a");
    EXPECT_EQ(Access::Failed, facts.access);
    EXPECT_EQ(EventCode::Loop, facts.event->code);
    expectFailure(files_.read("/a", kPlenty), EventCode::Loop);
}

TEST_P(FilesTest, OnlyRegularFilesAreRead) {
    fs::create_directories(at("dir"));
    ASSERT_EQ(0, mkfifo(at("fifo").c_str(), 0666));
    const Files::Content directory = files_.read("/dir", kPlenty);
    EXPECT_EQ(Access::Missing, directory.access);
    EXPECT_FALSE(directory.event);
    for (const Files::Content& fifo :
         {files_.read("/fifo", kPlenty), files_.sha256("/fifo"), files_.readStart("/fifo", 1)}) {
        EXPECT_EQ(Access::Missing, fifo.access);
        ASSERT_TRUE(fifo.event);
        EXPECT_EQ(EventCode::SpecialFile, fifo.event->code);
    }
    EXPECT_EQ(FileFacts::Kind::Other, files_.look("/fifo").facts.kind);
}

TEST_P(FilesTest, WhateverIsInThePlaceOfAnExpectedFileIsTreatedAsWhatItIs) {
    tree_.write("file", "text");
    link("file", "link");
    fs::create_directories(at("dir"));
    ASSERT_EQ(0, mkfifo(at("fifo").c_str(), 0666));
    for (const char* const path : {"/file", "/link", "/dir", "/fifo", "/missing"}) {
        const Files::Content plain = Files(root_, settings_).read(path, kPlenty);
        files_.expectRegular(path);
        const Files::Content expected = files_.read(path, kPlenty);
        EXPECT_EQ(plain.access, expected.access) << path;
        EXPECT_EQ(plain.bytes ? *plain.bytes : "-", expected.bytes ? *expected.bytes : "-") << path;
        EXPECT_EQ(plain.event.has_value(), expected.event.has_value()) << path;
    }
}

TEST_P(FilesTest, AContentThatTheCallerSearchesForKeysIsNotCachedForOthers) {
    tree_.write("key", "AGE-SECRET-KEY-1QQ");
    EXPECT_EQ(Access::Ok, files_.read("/key", kPlenty, KeySearch::ByCaller).access);
    EXPECT_EQ(Access::Ok, files_.open("/key", KeySearch::ByCaller).access);
    expectFailure(files_.read("/key", kPlenty), EventCode::Denied);
    expectFailure(files_.readStart("/key", kPlenty), EventCode::Denied);
    EXPECT_EQ(Access::Failed, files_.open("/key").access);
}

TEST_P(FilesTest, SecretFilesAreNotReadByAnyPath) {
    for (const char* path : {"etc/shadow", "etc/gshadow-", "etc/ssl/private/a.key", "root/.ssh/id",
                             "home/u/.ssh/id", "home/u/.gnupg/k", "etc/ssh/ssh_host_rsa_key",
                             "etc/pki/tls/private/k", "proc/1/environ", "proc/1/mem", "dev/shm/x"}) {
        tree_.write(path, "secret");
        const std::string name = std::string("/") + path;
        expectFailure(files_.read(name, kPlenty), EventCode::Denied);
        expectFailure(files_.readStart(name, 1), EventCode::Denied);
        expectFailure(files_.sha256(name), EventCode::Denied);
        EXPECT_EQ(Access::Ok, files_.look(name).access) << "that it is there is no secret";
    }
    link("/etc/shadow", "tmp/harmless");
    link("/etc", "tmp/e");
    for (const char* path :
         {"/tmp/harmless", "/tmp/e/shadow", "/tmp/../etc//./shadow", "/tmp/e/../etc/shadow"})
        expectFailure(files_.read(path, kPlenty), EventCode::Denied);
    for (const char* path : {"/etc/shadow.conf", "/etc/ssh/ssh_host_rsa_key.pub", "/etc/ssl/certs/a.pem",
                             "/usr/dev/x", "/home/u/.sshrc"})
        EXPECT_FALSE(isSecretByName(path)) << path;
}

TEST_P(FilesTest, ContentIsLimited) {
    const std::string content = std::string(10'000, 'x') + "end";
    tree_.write("f", content);
    tree_.write("empty", "");
    expectFailure(files_.read("/f", 10'002), EventCode::LimitBytes);
    EXPECT_EQ(content, text("/f", 10'003));
    expectFailure(files_.read("/f", 10'002), EventCode::LimitBytes);
    EXPECT_EQ("xxxxx", *files_.readStart("/f", 5).bytes);
    EXPECT_EQ(content, *files_.readStart("/f", kPlenty).bytes);
    EXPECT_EQ("", text("/empty"));
    EXPECT_EQ("", *files_.readStart("/f", 0).bytes);
}

TEST_P(FilesTest, CachedStartIsNotUsedAsTheWholeFile) {
    tree_.write("f", "0123456789");
    EXPECT_EQ("012", *files_.readStart("/f", 3).bytes);
    EXPECT_EQ("01", *files_.readStart("/f", 2).bytes);
    EXPECT_EQ("01234", *files_.readStart("/f", 5).bytes);
    EXPECT_EQ("0123456789", text("/f"));
    EXPECT_EQ("0123456789", *files_.readStart("/f", 10).bytes);
}

TEST_P(FilesTest, UnchangedFileIsReadOnce) {
    tree_.write("f", "first");
    link("f", "l");
    const auto bytes = files_.read("/f", kPlenty).bytes;
    EXPECT_EQ(bytes, files_.read("/f", kPlenty).bytes);
    EXPECT_EQ(bytes, files_.read("/l", kPlenty).bytes);
    tree_.write("f", "changed");
    EXPECT_EQ("changed", text("/l"));
    EXPECT_EQ("first", *bytes);
}

TEST_P(FilesTest, EvictedFilesAreReadAgain) {
    for (int i = 0; i < 8; ++i)
        tree_.write("f" + std::to_string(i), std::string(std::size_t{12} << 20, static_cast<char>('a' + i)));
    std::weak_ptr<const std::string> first = files_.read("/f0", 1U << 30U).bytes;
    EXPECT_FALSE(first.expired());
    for (int i = 1; i < 8; ++i) EXPECT_EQ('a' + i, text("/f" + std::to_string(i), 1U << 30U).back());
    EXPECT_TRUE(first.expired()) << "96 MiB are not all held";
    EXPECT_EQ('a', text("/f0", 1U << 30U).front());
}

TEST_P(FilesTest, HashIsSha256) {
    tree_.write("empty", "");
    tree_.write("abc", "abc");
    tree_.write("million", std::string(1'000'000, 'a'));
    EXPECT_EQ("e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855",
              *files_.sha256("/empty").bytes);
    EXPECT_EQ("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad",
              *files_.sha256("/abc").bytes);
    EXPECT_EQ("cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0",
              *files_.sha256("/million").bytes);
    EXPECT_EQ(files_.sha256("/abc").bytes, files_.sha256("/abc").bytes);
    settings_.fileSystem.maxHashedSize = 2;
    expectFailure(files_.sha256("/abc"), EventCode::LimitBytes);
    EXPECT_EQ(Access::Missing, files_.sha256("/none").access);
}

TEST_P(FilesTest, FileWithChangingSizeFailsAfterTwoAttempts) {
    int changes = 0;
    const auto growTimes = [&](int times) {
        tree_.write("f", "abc");
        changes = 0;
        beforeReading = [this, &changes, times] {
            if (changes < times) std::ofstream(at("f"), std::ios::app) << ++changes;
        };
    };
    growTimes(1);
    EXPECT_EQ("abc1", text("/f"));
    growTimes(1);
    EXPECT_EQ("abc1", *files_.readStart("/f", 10).bytes);
    growTimes(1);
    // of "abc1"
    EXPECT_EQ("dbfcfd0d87220f629339bd3adcf452d083fde3246625fb3a93e314f833e20d37", *files_.sha256("/f").bytes);
    growTimes(1000);
    expectFailure(files_.read("/f", kPlenty), EventCode::Io);
    EXPECT_LT(changes, 1000);
    growTimes(1000);
    expectFailure(files_.sha256("/f"), EventCode::Io);
    beforeReading = nullptr;
}

TEST_P(FilesTest, ReadingWithoutPermissionFails) {
    tree_.write("f", "x");
    tree_.write("closed/f", "x");
    fs::permissions(at("f"), fs::perms::none);
    fs::permissions(at("closed"), fs::perms::none);
    fs::permissions(tree_.path(), fs::perms::all);
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
        Files files(root_, settings_);
        expectFailure(files.read("/f", kPlenty), EventCode::Permission);
        expectFailure(files.read("/closed/f", kPlenty), EventCode::Permission);
        EXPECT_EQ(Access::Ok, files.look("/f").access);
        EXPECT_EQ(EventCode::Permission, files.look("/closed/f").event->code);
        _exit(HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    fs::permissions(at("closed"), fs::perms::all);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}

TEST(FilesOfTheLiveMachine, PseudoFilesAreDenied) {
    const Settings settings;
    const Root root;
    Files files(root, settings);
    for (const char* path :
         {"/proc/self/root/etc/passwd", "/proc/self/cwd/x", "/proc/self/exe", "/proc/self/status",
          "/proc/1/cmdline", "/proc/no/such", "/dev/../proc/version", "/proc/../etc/passwd"}) {
        for (const Files::Facts& facts : {files.look(path), files.lookAtLink(path)}) {
            EXPECT_EQ(Access::Failed, facts.access) << path;
            EXPECT_EQ(EventCode::Denied, facts.event->code) << path;
        }
        EXPECT_EQ(EventCode::Denied, files.read(path, kPlenty).event->code) << path;
        EXPECT_EQ(EventCode::Denied, files.sha256(path).event->code) << path;
        EXPECT_EQ("", files.linkText(path)) << path;
    }
    EXPECT_EQ(EventCode::SpecialFile, files.read("/dev/null", kPlenty).event->code);
    EXPECT_EQ(Access::Ok, files.look("/dev/null").access);
}

}  // namespace
}  // namespace toolkit::quorvis
