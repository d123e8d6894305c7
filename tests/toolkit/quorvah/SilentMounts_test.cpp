// Scans of machines and trees where file systems never answer.
#include <pwd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>

#include "kest/Descriptor.h"
#include "tests/toolkit/quorvah/ScannerTest.h"

namespace quorvahtest {
namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;

// "a;b" to {"a", "b"}
std::set<std::string> entriesOf(std::string text) {
    std::set<std::string> entries;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(';'), text.size());
        entries.insert(text.substr(0, end));
        text.erase(0, end + 1);
    }
    return entries;
}

std::set<std::string> without(std::set<std::string> from, const std::set<std::string>& taken) {
    for (const std::string& entry : taken) from.erase(entry);
    return from;
}

class SilentMounts : public ScannerTest {
  protected:
    // Scans all groups while silent file systems are mounted over these paths. Skips the test if that is impossible here.
    Finished scanBehind(const std::vector<std::string>& mounts,
                        const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments = mounts;
        arguments.insert(arguments.end(),
                         {"--", QUORVAH_PROGRAM, "-c", configure(allDisplayNames()), "-o", out()});
        arguments.insert(arguments.end(), options.begin(), options.end());
        const auto start = std::chrono::steady_clock::now();
        Finished finished = zavtest::runProgram(QUORVAH_SILENT_MOUNTS, arguments);
        elapsed_ = std::chrono::steady_clock::now() - start;
        return finished;
    }
    Element scanInfo() const {
        for (const Element& element : elements()) {
            if (element.group == "ScanInfo") return element;
        }
        throw std::runtime_error("no ScanInfo");
    }
    // The groups with their reasons that the last scan did not finish.
    std::set<std::string> unfinished() const {
        const Element info = scanInfo();
        std::set<std::string> groups = entriesOf(info["GroupsPartial"]);
        groups.merge(entriesOf(info["GroupsUnread"]));
        return groups;
    }
    // What is unfinished in a scan without silent file systems.
    std::set<std::string> usuallyUnfinished(const std::vector<std::string>& options = {}) const {
        EXPECT_EQ(scan(allDisplayNames(), options).status, 0);
        return unfinished();
    }
    std::string makeDirectory(const std::string& name) const {
        fs::create_directories(dir_.path() / name);
        return (dir_.path() / name).string();
    }

    std::chrono::steady_clock::duration elapsed_{};
};

#define SKIP_IF_NOT_MOUNTED(finished) \
    if ((finished).status == 77) GTEST_SKIP() << "cannot mount: " << (finished).errors

constexpr seconds kWithoutWaiting(5);

TEST_F(SilentMounts, AreListedAsDrivesWithoutBeingAsked) {
    const std::set<std::string> usual = usuallyUnfinished();
    const std::string one = makeDirectory("remote");
    const std::string two = makeDirectory("program");
    const Finished finished = scanBehind({"fuse.sshfs", one, "fuse", two});
    SKIP_IF_NOT_MOUNTED(finished);
    ASSERT_EQ(finished.status, 0) << finished.errors;
    EXPECT_LT(elapsed_, kWithoutWaiting);
    EXPECT_EQ(unfinished(), usual);
    int found = 0;
    for (const Element& element : elements()) {
        if (element.group != "LogicalDrive" || (element["Root"] != one && element["Root"] != two)) continue;
        ++found;
        EXPECT_EQ(element["Name"], "silent");
        EXPECT_EQ(element["FileSystemSize"], "");
        EXPECT_EQ(element["AvailableSpace"], "");
    }
    EXPECT_EQ(found, 2);
}

TEST_F(SilentMounts, ALocalFileSystemBehindOneIsNotAsked) {
    const std::string outer = makeDirectory("outer");
    const std::string inner = makeDirectory("outer/inner");
    // The inner one is local as far as its type tells, and can only be reached through the outer one.
    const Finished finished = scanBehind({"fuse.lxcfs", inner, "fuse.sshfs", outer});
    SKIP_IF_NOT_MOUNTED(finished);
    ASSERT_EQ(finished.status, 0) << finished.errors;
    EXPECT_LT(elapsed_, kWithoutWaiting);
}

TEST_F(SilentMounts, OverAHomeDirectoryCostOnlyWhatIsInIt) {
    const passwd* const user = ::getpwuid(0);
    ASSERT_NE(user, nullptr);
    const std::set<std::string> usual = usuallyUnfinished();
    const Finished finished = scanBehind({"fuse.sshfs", user->pw_dir});
    SKIP_IF_NOT_MOUNTED(finished);
    ASSERT_EQ(finished.status, 0) << finished.errors;
    EXPECT_LT(elapsed_, kWithoutWaiting);
    EXPECT_EQ(without(unfinished(), usual), (std::set<std::string>{"ScreenSaverInfo=home-refused"}));
    EXPECT_EQ(scanInfo()["Complete"], "false");
}

TEST_F(SilentMounts, OverThePackageDatabaseCostOnlyWhatIsInIt) {
    const std::string database = "/var/lib/dpkg";
    if (!fs::exists(database)) GTEST_SKIP() << "no " << database;
    const std::set<std::string> usual = usuallyUnfinished();
    const Finished finished = scanBehind({"fuse.anything", database});
    SKIP_IF_NOT_MOUNTED(finished);
    ASSERT_EQ(finished.status, 0) << finished.errors;
    EXPECT_LT(elapsed_, kWithoutWaiting);
    EXPECT_EQ(without(unfinished(), usual),
              (std::set<std::string>{"OperatingSystem=not-local", "SoftwarePackages=not-local"}));
}

TEST_F(SilentMounts, OverAFolderOfATreeCostOnlyWhatIsReadThere) {
    const std::string tree = (dir_.path() / "tree").string();
    fs::copy(QUORVAH_TEST_TREES "/x86-server", tree,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    fs::create_directories(tree + "/home/ada/.config");
    const std::vector<std::string> options = {"--root", tree};
    const std::set<std::string> usual = usuallyUnfinished(options);
    const Finished finished = scanBehind({"fuse", tree + "/etc"}, options);
    SKIP_IF_NOT_MOUNTED(finished);
    ASSERT_EQ(finished.status, 0) << finished.errors;
    EXPECT_LT(elapsed_, kWithoutWaiting);
    const std::set<std::string> lost = without(unfinished(), usual);
    EXPECT_TRUE(lost.contains("UserAccountInfo=not-local"));
    for (const std::string& group : lost) EXPECT_TRUE(group.ends_with("=not-local")) << group;
    for (const char* const group : {"Storage", "Processor", "Memory"})
        EXPECT_TRUE(entriesOf(scanInfo()["GroupsComplete"]).contains(group)) << group;
}

TEST_F(SilentMounts, AreNotEnteredThroughALink) {
    const std::string tree = makeDirectory("tree");
    makeDirectory("tree/far/config");
    dir_.link("tree/etc", "far/config");
    dir_.write("tree/proc/cpuinfo", "processor : 0\n");
    const Finished finished = scanBehind({"fuse.sshfs", tree + "/far"}, {"--root", tree});
    SKIP_IF_NOT_MOUNTED(finished);
    ASSERT_EQ(finished.status, 0) << finished.errors;
    EXPECT_LT(elapsed_, kWithoutWaiting);
    EXPECT_TRUE(unfinished().contains("UserAccountInfo=not-local"));
}

TEST_F(SilentMounts, ATreeThatDoesNotAnswerIsRefused) {
    const std::string tree = makeDirectory("tree");
    const Finished finished = scanBehind({"fuse.sshfs", tree}, {"--root", tree});
    SKIP_IF_NOT_MOUNTED(finished);
    EXPECT_EQ(finished.status, 2);
    EXPECT_LT(elapsed_, seconds(15));
    EXPECT_NE(finished.errors.find("does not answer"), std::string::npos) << finished.errors;
    EXPECT_FALSE(fs::exists(out()));
}

// A container's part of /proc is read though a program provides it. Here the program has stopped.
TEST_F(SilentMounts, AFileThatMustBeReadCostsTheTimeOfItsGroups) {
    const std::string tree = (dir_.path() / "tree").string();
    fs::copy(QUORVAH_TEST_TREES "/x86-server", tree,
             fs::copy_options::recursive | fs::copy_options::copy_symlinks);
    const std::vector<std::string> options = {"--root", tree};
    const std::set<std::string> usual = usuallyUnfinished(options);
    const Finished finished = scanBehind({"fuse.lxcfs", tree + "/proc/meminfo"}, options);
    SKIP_IF_NOT_MOUNTED(finished);
    ASSERT_EQ(finished.status, 0) << finished.errors;
    EXPECT_GT(elapsed_, seconds(9));
    EXPECT_LT(elapsed_, seconds(30));
    const std::set<std::string> lost = without(unfinished(), usual);
    EXPECT_TRUE(lost.contains("Memory=timeout"));
    for (const std::string& group : lost) EXPECT_TRUE(group.ends_with("=timeout")) << group;
    EXPECT_TRUE(entriesOf(scanInfo()["GroupsComplete"]).contains("Storage"));
}

TEST_F(SilentMounts, PipesTerminalsAndSilentSocketsInPlaceOfFilesAreNotWaitedFor) {
    const std::string tree = makeDirectory("tree");
    dir_.write("tree/proc/cpuinfo", "processor : 0\n");
    for (const char* const folder : {"etc", "run/dbus", "run/cups", "var/lib/dpkg"})
        makeDirectory("tree/" + std::string(folder));
    for (const char* const file : {"/etc/passwd", "/etc/os-release", "/proc/meminfo", "/var/lib/dpkg/status"})
        ASSERT_EQ(::mkfifo((tree + file).c_str(), 0600), 0);
    // Only root may make devices; others test the rest.
    ::mknod((tree + "/proc/stat").c_str(), S_IFCHR | 0600, makedev(5, 0));
    ::mknod((tree + "/proc/uptime").c_str(), S_IFCHR | 0600, makedev(4, 1));
    std::vector<kest::Descriptor> listening;
    fs::current_path(tree);  // the path of a socket is short
    for (const char* const path : {"run/dbus/system_bus_socket", "run/cups/cups.sock"}) {
        listening.emplace_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::string(path).copy(address.sun_path, sizeof address.sun_path - 1);
        ASSERT_EQ(::bind(listening.back().number(), reinterpret_cast<sockaddr*>(&address), sizeof address),
                  0);
        ASSERT_EQ(::listen(listening.back().number(), 8), 0);
    }
    fs::current_path("/");
    const auto start = std::chrono::steady_clock::now();
    ASSERT_EQ(scan(allDisplayNames(), {"--root", tree}).status, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, kWithoutWaiting);
    for (const std::string& group : unfinished()) EXPECT_FALSE(group.ends_with("=timeout")) << group;
}

}  // namespace
}  // namespace quorvahtest
