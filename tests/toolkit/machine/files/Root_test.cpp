#include "toolkit/machine/files/Root.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>

#include "tests/support/ScratchDir.h"

using toolkit::Root;
namespace fs = std::filesystem;

namespace {

// All tests of directories run with lookups by the kernel and by the walk.
class RootBelow : public testing::TestWithParam<Root::Lookup> {
  protected:
    Root root() const { return Root(dir_.path().string(), GetParam()); }
    void link(const std::string& target, const std::string& name) const {
        fs::create_directories((dir_.path() / name).parent_path());
        fs::create_symlink(target, dir_.path() / name);
    }

    zavtest::ScratchDir dir_;
};

INSTANTIATE_TEST_SUITE_P(Lookups, RootBelow, testing::Values(Root::Lookup::Kernel, Root::Lookup::ByComponent),
                         [](const auto& lookup) {
                             return lookup.param == Root::Lookup::Kernel ? "Kernel" : "ByComponent";
                         });

}  // namespace

TEST_P(RootBelow, ReadsFilesOfTheTree) {
    dir_.write("proc/version", "Linux version 6.1\n");
    EXPECT_EQ(root().read("/proc/version"), "Linux version 6.1\n");
    EXPECT_FALSE(root().live());
    EXPECT_EQ(root().directory(), dir_.path().string());
}

TEST_P(RootBelow, NeverReadsFilesOfTheHost) {
    EXPECT_EQ(root().read("/proc/version"), std::nullopt);
    EXPECT_EQ(root().readLine("/etc/passwd"), "");
    EXPECT_TRUE(root().list("/etc").empty());
    EXPECT_FALSE(root().exists("/proc/self/exe"));
    EXPECT_EQ(root().readLink("/proc/self/exe"), "");
}

TEST_P(RootBelow, AbsoluteLinksStayInside) {
    dir_.write("usr/lib/os-release", "ID=inside\n");
    link("/usr/lib/os-release", "etc/os-release");
    EXPECT_EQ(root().read("/etc/os-release"), "ID=inside\n");
}

TEST_P(RootBelow, LinksToTheHostAreMissing) {
    link("/etc/passwd", "etc/shadowed");
    link("/proc", "host");
    EXPECT_EQ(root().read("/etc/shadowed"), std::nullopt);
    EXPECT_EQ(root().read("/host/version"), std::nullopt);
}

TEST_P(RootBelow, GoingUpEndsAtTheTop) {
    dir_.write("etc/hostname", "inside\n");
    link("../../../../../../etc/hostname", "deep/link");
    EXPECT_EQ(root().readLine("/../../../etc/hostname"), "inside");
    EXPECT_EQ(root().readLine("/deep/link"), "inside");
    EXPECT_EQ(root().readLine("/etc/../etc/./hostname"), "inside");
}

TEST_P(RootBelow, LinksWithinThePathAreFollowed) {
    dir_.write("sys/devices/pci0000:00/net/eth0/address", "02:00:00:00:00:01\n");
    link("../../devices/pci0000:00/net/eth0", "sys/class/net/eth0");
    EXPECT_EQ(root().readLine("/sys/class/net/eth0/address"), "02:00:00:00:00:01");
    EXPECT_EQ(root().readLine("/sys/class/net/eth0/../eth0/address"), "02:00:00:00:00:01");
    EXPECT_EQ(root().readLink("/sys/class/net/eth0"), "../../devices/pci0000:00/net/eth0");
    EXPECT_EQ(root().linkName("/sys/class/net/eth0"), "eth0");
}

TEST_P(RootBelow, ALinkThatLeadsToItselfIsMissing) {
    link("loop", "loop");
    EXPECT_EQ(root().read("/loop"), std::nullopt);
    EXPECT_FALSE(root().exists("/loop"));
    EXPECT_EQ(root().readLink("/loop"), "loop");
}

TEST_P(RootBelow, ADanglingLinkIsMissingButCanBeRead) {
    link("/usr/share/zoneinfo/Europe/Vienna", "etc/localtime");
    EXPECT_FALSE(root().exists("/etc/localtime"));
    EXPECT_EQ(root().readLink("/etc/localtime"), "/usr/share/zoneinfo/Europe/Vienna");
}

TEST_P(RootBelow, ListsNamesSorted) {
    dir_.write("d/b", "");
    dir_.write("d/a", "");
    dir_.write("d/.hidden", "");
    EXPECT_EQ(root().list("/d"), (std::vector<std::string>{".hidden", "a", "b"}));
    EXPECT_TRUE(root().list("/d/a").empty());
    EXPECT_EQ(root().list("/"), (std::vector<std::string>{"d"}));
}

TEST_P(RootBelow, TellsDirectoriesFromFiles) {
    dir_.write("d/file", "");
    EXPECT_TRUE(root().exists("/d/file"));
    EXPECT_FALSE(root().isDirectory("/d/file"));
    EXPECT_TRUE(root().isDirectory("/d"));
    EXPECT_TRUE(root().isDirectory("/"));
    EXPECT_FALSE(root().exists("/d/file/below"));
}

TEST_P(RootBelow, ReadsNoDirectoriesAndNoPipes) {
    fs::create_directories(dir_.path() / "directory");
    ASSERT_EQ(mkfifo((dir_.path() / "pipe").c_str(), 0600), 0);
    EXPECT_EQ(root().read("/directory"), std::nullopt);
    EXPECT_EQ(root().read("/pipe"), std::nullopt);
    EXPECT_EQ(root().denials(), 0);
}

TEST_P(RootBelow, ALineIsTheFirstOneTrimmed) {
    dir_.write("a", "  value \t\r\nsecond\n");
    dir_.write("b", "unfinished");
    dir_.write("c", "");
    EXPECT_EQ(root().readLine("/a"), "value");
    EXPECT_EQ(root().readLine("/b"), "unfinished");
    EXPECT_EQ(root().readLine("/c"), "");
}

TEST_P(RootBelow, NumbersAreWholeLines) {
    const std::pair<const char*, toolkit::Count> cases[] = {{"0\n", 0},
                                                            {"-1\n", std::nullopt},
                                                            {"+1\n", std::nullopt},
                                                            {" 42 \n", 42},
                                                            {"", std::nullopt},
                                                            {"4K\n", std::nullopt},
                                                            {"0x10\n", std::nullopt},
                                                            {"9223372036854775807\n", INT64_MAX},
                                                            {"9223372036854775808\n", std::nullopt}};
    for (const auto& [content, expected] : cases) {
        dir_.write("number", content);
        EXPECT_EQ(root().readCount("/number"), expected) << content;
    }
}

TEST_P(RootBelow, FilesOfAnySizeAreReadWhole) {
    for (const std::size_t size :
         {std::size_t{1}, std::size_t{4096}, std::size_t{16384}, std::size_t{300001}}) {
        const std::string content(size, 'x');
        dir_.write("file", content);
        EXPECT_EQ(root().read("/file"), content);
    }
}

TEST_P(RootBelow, AFileAboveTheLimitIsRefused) {
    for (const std::size_t limit : {std::size_t{10}, std::size_t{4096}, std::size_t{100000}}) {
        dir_.write("file", std::string(limit, 'x'));
        EXPECT_TRUE(root().read("/file", limit).has_value());
        dir_.write("file", std::string(limit + 1, 'x'));
        EXPECT_EQ(root().read("/file", limit), std::nullopt);
    }
}

TEST_P(RootBelow, AnOverlongLineIsUnknownAndCounted) {
    const Root tree = root();
    dir_.write("short", std::string(Root::kLineLimit, 'x') + "\nmore");
    EXPECT_EQ(tree.readLine("/short").size(), Root::kLineLimit);
    EXPECT_EQ(tree.excesses(), 0);
    dir_.write("long", std::string(Root::kLineLimit + 1, 'x'));
    EXPECT_EQ(tree.readLine("/long"), "");
    EXPECT_EQ(tree.excesses(), 1);
    // A sparse file is read only up to the limit.
    fs::resize_file(dir_.write("sparse", "first\n"), std::uintmax_t{1} << 40);
    EXPECT_EQ(tree.readLine("/sparse"), "first");
    EXPECT_EQ(tree.read("/sparse"), std::nullopt);
    EXPECT_EQ(tree.excesses(), 2);
}

TEST_P(RootBelow, EveryAccessThrowsAfterTheDeadline) {
    dir_.write("file", "x");
    Root tree = root();
    tree.watch(Root::Clock::now() + std::chrono::hours(1));
    EXPECT_EQ(tree.readLine("/file"), "x");
    tree.watch(Root::Clock::now());
    EXPECT_THROW(tree.readLine("/file"), Root::OutOfTime);
    EXPECT_THROW(tree.list("/"), Root::OutOfTime);
    EXPECT_THROW(tree.exists("/file"), Root::OutOfTime);
    tree.watch({});
    EXPECT_EQ(tree.readLine("/file"), "x");
}

TEST(Root, RefusesAMissingDirectory) {
    const zavtest::ScratchDir dir;
    const fs::path file = dir.write("file", "");
    EXPECT_THROW(Root(file.string()), std::system_error);
    EXPECT_THROW(Root((dir.path() / "missing").string()), std::system_error);
}

TEST(Root, TheLiveMachineIsTheWholeFileSystem) {
    const zavtest::ScratchDir dir;
    const fs::path file = dir.write("file", "12\n");
    const Root root;
    EXPECT_TRUE(root.live());
    EXPECT_EQ(root.readCount(file.string()), 12);
    EXPECT_EQ(root.list(dir.path().string()), (std::vector<std::string>{"file"}));
    EXPECT_FALSE(root.readLine("/proc/version").empty());
}

TEST(Root, CountsWhatItMayNotRead) {
    const zavtest::ScratchDir dir;
    const fs::path file = dir.write("secret", "x");
    fs::permissions(file, fs::perms::none);
    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        if (geteuid() == 0 && (chmod(dir.path().c_str(), 0755) != 0 || setuid(65534) != 0)) _exit(2);
        const Root root;
        const bool nothing = !root.read(file.string()) && !root.read("/no/such/file");
        const bool counted = root.denials() == 1;
        root.forgetDenials(0);
        _exit(nothing && counted && root.denials() == 0 ? 0 : 1);
    }
    int status = 0;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
}
