// Which package owns the files that signatures find.
#include <malloc.h>

#include <cstdlib>
#include <filesystem>
#include <random>

#include "tests/support/Program.h"
#include "tests/toolkit/quorvis/EvaluationFixture.h"

namespace toolkit::quorvis {
namespace {

class Ownership : public Evaluation {
  protected:
    static std::string valueOf(const Match& match, const std::string& name) {
        for (const auto& [variable, value] : match.variables) {
            if (variable == name) return value;
        }
        return "-";
    }
    // "bash 5.2": name and version of the package that owns the file at this path; " " if none does.
    std::string ownerOf(const std::string& path, const std::string& attributes = {}) {
        const std::vector<Match> found = evaluateOne(
            "<Match><File id='f' path='" + path + "' " + attributes + "/></Match>" +
            R"(<Output><Variable name="name" value="${f.packageName}"/>)"
            R"(<Variable name="version" value="${f.packageUpstream}"/><Variable name="purl" value="${f.package}"/></Output>)");
        if (found.empty()) return "no match";
        purl_ = valueOf(found.front(), "purl");
        return valueOf(found.front(), "name") + " " + valueOf(found.front(), "version");
    }
    void list(const std::string& package, const std::string& paths) {
        tree_.write("var/lib/dpkg/info/" + package + ".list", paths);
    }

    std::string purl_;
};

TEST_F(Ownership, AFileHasThePackageWhoseListNamesIt) {
    install("bash", "5.2-1");
    list("bash", "/.\n/bin\n/bin/bash\n");
    tree_.write("bin/bash", "");
    tree_.write("bin/other", "");
    EXPECT_EQ("bash 5.2", ownerOf("/bin/bash"));
    EXPECT_EQ("pkg:deb/bash@5.2-1?arch=amd64", purl_);
    EXPECT_EQ(" ", ownerOf("/bin/other"));
    EXPECT_EQ("", purl_);
    EXPECT_TRUE(eventCodes().empty());
}

TEST_F(Ownership, ListsFromBeforeTheMergeOfUsrAreUnderstood) {
    install("bash", "5.2-1");
    install("new", "1-1");
    list("bash", "/bin/bash\n");
    list("new", "/usr/bin/new\n");
    tree_.write("usr/bin/bash", "");
    tree_.write("usr/bin/new", "");
    std::filesystem::create_directory_symlink("usr/bin", tree_.path() / "bin");
    for (const char* const path : {"/bin/bash", "/usr/bin/bash"}) EXPECT_EQ("bash 5.2", ownerOf(path));
    for (const char* const path : {"/bin/new", "/usr/bin/new"}) EXPECT_EQ("new 1", ownerOf(path));
}

TEST_F(Ownership, WithoutTheMergeTwoPathsAreTwoFiles) {
    install("bash", "5.2-1");
    list("bash", "/bin/bash\n");
    tree_.write("usr/bin/bash", "");
    tree_.write("bin/bash", "");
    EXPECT_EQ(" ", ownerOf("/usr/bin/bash"));
}

TEST_F(Ownership, ALinkHasThePackageOfItsFileOrElseItsOwn) {
    install("tool", "1-1");
    install("links", "2-1");
    list("tool", "/usr/bin/tool-1\n");
    list("links", "/usr/bin/tool\n/usr/bin/data\n");
    tree_.write("usr/bin/tool-1", "");
    tree_.write("srv/data", "");
    std::filesystem::create_symlink("tool-1", tree_.path() / "usr/bin/tool");
    std::filesystem::create_symlink("../../srv/data", tree_.path() / "usr/bin/data");
    EXPECT_EQ("tool 1", ownerOf("/usr/bin/tool"));
    EXPECT_EQ("links 2", ownerOf("/usr/bin/data"));
}

TEST_F(Ownership, FilesOfRemovedPackagesHaveNone) {
    install("gone", "1-1", "config-files");
    list("gone", "/etc/gone.conf\n");
    tree_.write("etc/gone.conf", "");
    EXPECT_EQ(" ", ownerOf("/etc/gone.conf"));
}

TEST_F(Ownership, PackagesThatAreDirectoriesOwnWhatIsBelow) {
    tree_.write("snap/tool/16/meta/snap.yaml", "name: tool\nversion: '1.5'\n");
    tree_.write("snap/tool/16/bin/tool", "");
    tree_.write("snap/other/bin/tool", "");
    std::filesystem::create_directory_symlink("16", tree_.path() / "snap/tool/current");
    EXPECT_EQ("tool 1.5", ownerOf("/snap/tool/16/bin/tool"));
    EXPECT_EQ("tool 1.5", ownerOf("/snap/tool/current/bin/tool"));
    EXPECT_EQ(" ", ownerOf("/snap/other/bin/tool"));
}

TEST_F(Ownership, OfApkAndPacmanIsKnown) {
    tree_.write("lib/apk/db/installed", "P:busybox\nV:1.36.1-r2\nA:x86_64\nF:bin\nR:busybox\n\n");
    tree_.write("var/lib/pacman/local/zlib-1.3-2/desc",
                "%NAME%\nzlib\n\n%VERSION%\n1.3-2\n\n%ARCH%\nx86_64\n");
    tree_.write("var/lib/pacman/local/zlib-1.3-2/files", "%FILES%\nusr/\nusr/lib/\nusr/lib/libz.so.1\n");
    tree_.write("bin/busybox", "");
    tree_.write("usr/lib/libz.so.1", "");
    EXPECT_EQ("busybox 1.36.1", ownerOf("/bin/busybox"));
    EXPECT_EQ("zlib 1.3", ownerOf("/usr/lib/libz.so.1"));
}

TEST_F(Ownership, ADamagedListIsReportedOnceAndLeavesOtherFilesUnknown) {
    install("bash", "5.2-1");
    list("bash", "/bin/bash\n/bin/rba");
    tree_.write("bin/bash", "");
    tree_.write("bin/rbash", "");
    EXPECT_EQ("bash 5.2", ownerOf("/bin/bash"));
    EXPECT_EQ(std::vector<std::string>{"parse"}, eventCodes());
    EXPECT_EQ("- -", ownerOf("/bin/rbash"));
}

TEST_F(Ownership, OfMoreFilesThanTheLimitIsUnknownWhichIsToldOnce) {
    settings_.packages.maxFiles = 2;
    install("app", "1-1");
    list("app", "/.\n/opt\n/opt/one\n/opt/two\n/opt/three\n");
    tree_.write("lib/apk/db/installed", "P:busybox\nV:1.36.1-r2\nA:x86_64\nF:bin\nR:busybox\n\n");
    for (const char* path : {"opt/one", "opt/two", "opt/three", "opt/own", "bin/busybox"})
        tree_.write(path, "");
    EXPECT_EQ("app 1", ownerOf("/opt/one"));
    const std::vector<EventList::Entry> entries = events_.entries();
    ASSERT_EQ(1U, entries.size());
    EXPECT_EQ(EventCode::LimitEntries, entries.front().event.code);
    EXPECT_TRUE(entries.front().event.text.starts_with("packages have more than 2 files (Packages/maxFiles)"))
        << entries.front().event.text;
    EXPECT_TRUE(events_.reachedLimit());
    EXPECT_EQ("app 1", ownerOf("/opt/two"));
    for (const char* path : {"/opt/three", "/opt/own", "/bin/busybox"})
        EXPECT_EQ("- -", ownerOf(path)) << "not known to be without a package";
}

TEST_F(Ownership, OfAsManyFilesAsTheLimitIsKnown) {
    settings_.packages.maxFiles = 2;
    install("app", "1-1");
    list("app", "/.\n/opt\n/opt/one\n/opt/two\n");
    for (const char* path : {"opt/one", "opt/two", "opt/own"}) tree_.write(path, "");
    EXPECT_EQ("app 1", ownerOf("/opt/two"));
    EXPECT_EQ(" ", ownerOf("/opt/own"));
    EXPECT_TRUE(eventCodes().empty());
}

TEST_F(Ownership, OfAllFilesTakesSixteenBytesPerFile) {
    const auto inUse = [] {
        const struct mallinfo2 heap = ::mallinfo2();
        return heap.uordblks + heap.hblkhd;
    };
    if (inUse() == 0) GTEST_SKIP() << "the C library does not manage the memory";
    constexpr std::size_t kPackages = 5'000;
    constexpr std::size_t kFiles = 60;  // of a package
    std::string status;
    for (std::size_t package = 0; package < kPackages; ++package) {
        const std::string name = "package" + std::to_string(package);
        status +=
            "Package: " + name + "\nStatus: install ok installed\nArchitecture: amd64\nVersion: 1-1\n\n";
        std::string paths = "/.\n/usr\n/usr/share\n/usr/share/" + name + "\n";
        for (std::size_t file = 0; file < kFiles; ++file)
            paths +=
                "/usr/share/" + name + "/a-file-with-a-rather-long-name-" + std::to_string(file) + ".txt\n";
        list(name, paths);
    }
    tree_.write("var/lib/dpkg/status", status);

    const Root root(tree_.path().string());
    EvaluationContext context(root, settings_);
    ASSERT_EQ(kPackages, context.packages().all().size());
    const std::size_t before = inUse();
    const PackageIndex::Row* const owner =
        context.owners().ownerOf("/usr/share/package4999/a-file-with-a-rather-long-name-59.txt");
    const std::size_t taken = inUse() - before;
    ASSERT_NE(nullptr, owner);
    EXPECT_EQ("package4999", owner->name);
    EXPECT_EQ(nullptr, context.owners().ownerOf("/usr/share/package4999/other"));
    EXPECT_GE(taken, 12 * kPackages * kFiles) << "the index of all files was counted";
    EXPECT_LE(taken, 16 * kPackages * kFiles);
    EXPECT_FALSE(context.owners().incomplete());
}

constexpr char kByFile[] = R"(<Detection><Each><Glob id="f" pattern="/opt/*/app"/></Each>)"
                           R"(<Output><Variable name="found" value="${f.path}"/></Output></Detection>)";
constexpr char kByPackage[] = R"(<Detection><Each><Package id="p" nameRegex="^app"/></Each>)"
                              R"(<Output><Variable name="found" value="${p.name}"/></Output></Detection>)";

class FoundTwice : public Ownership {
  protected:
    std::string found(const std::string& content) {
        std::string text;
        for (const Match& match : evaluateOne(content)) text += valueOf(match, "found") + " ";
        return text;
    }
};

TEST_F(FoundTwice, APackageIsDroppedIfItsFileWasFound) {
    install("app", "1-1");
    install("app2", "2-1");
    list("app", "/opt/a/app\n");
    tree_.write("opt/a/app", "");
    tree_.write("opt/b/app", "");
    EXPECT_EQ("/opt/a/app /opt/b/app app2 ", found(std::string(kByFile) + kByPackage));
    EXPECT_EQ("app app2 /opt/a/app /opt/b/app ", found(std::string(kByPackage) + kByFile));
}

TEST_F(FoundTwice, BeyondTheLimitOfFilesNoMatchIsLost) {
    settings_.packages.maxFiles = 1;
    install("app", "1-1");
    install("app2", "2-1");
    list("app", "/opt/a/app\n");
    list("app2", "/opt/b/app\n");
    tree_.write("opt/a/app", "");
    tree_.write("opt/b/app", "");
    EXPECT_EQ("/opt/a/app /opt/b/app app2 ", found(std::string(kByFile) + kByPackage))
        << "the file of the second package is not known to be its own";
    EXPECT_EQ(std::vector<std::string>{"limit-entries"}, eventCodes());
}

TEST_F(FoundTwice, WithoutEachTheFilesOfAllLeavesCount) {
    install("app", "1-1");
    list("app", "/opt/a/app\n");
    tree_.write("opt/a/app", "");
    tree_.write("etc/app", "");
    const std::string files =
        R"(<Detection><Match><All><File path="/etc/app"/><File path="/opt/a/app"/></All></Match>)"
        R"(<Output><Variable name="found" value="file"/></Output></Detection>)";
    EXPECT_EQ("file ", found(files + kByPackage));
    settings_.evaluation.evidence = false;
    EXPECT_EQ("file ", found(files + kByPackage));
}

TEST_F(FoundTwice, AMatchOfPackagesAloneIsDroppedToo) {
    install("app", "1-1");
    list("app", "/opt/a/app\n");
    tree_.write("opt/a/app", "");
    const std::string byPackage =
        R"(<Detection><Match><Package id="p" name="app"/></Match>)"
        R"(<Output><Variable name="found" value="${p.name}"/></Output></Detection>)";
    EXPECT_EQ("/opt/a/app ", found(kByFile + byPackage));
}

TEST_F(FoundTwice, PackagesOfTheSameSourceAndVersionArePartsOfOneProduct) {
    tree_.write(
        "var/lib/dpkg/status",
        "Package: app\nStatus: install ok installed\nVersion: 1-1\nSource: src\nArchitecture: amd64\n\n"
        "Package: app-doc\nStatus: install ok installed\nVersion: 1-1\nSource: src\nArchitecture: all\n\n"
        "Package: app-old\nStatus: install ok installed\nVersion: 0-1\nSource: src\nArchitecture: all\n\n");
    list("app", "/opt/a/app\n");
    tree_.write("opt/a/app", "");
    EXPECT_EQ("/opt/a/app app-old ", found(std::string(kByFile) + kByPackage));
}

TEST_F(FoundTwice, TheExplanationTellsWhyAPackageIsDropped) {
    explained_ = "g";
    install("app", "1-1");
    list("app", "/opt/a/app\n");
    tree_.write("opt/a/app", "");
    found(std::string(kByFile) + kByPackage);
    const auto told = [](const std::string& line) {
        return line == "item pkg:deb/app@1-1?arch=amd64 owns a file of an earlier match";
    };
    EXPECT_TRUE(std::ranges::any_of(sink_.explanation, told));
}

// Compares with the package manager itself.
TEST(OwnershipOnThisMachine, IsWhatDpkgSays) {
    if (!std::filesystem::exists("/usr/bin/dpkg-query")) GTEST_SKIP() << "no dpkg here";
    std::vector<std::string> files;
    for (const char* const directory : {"/usr/bin", "/usr/sbin", "/usr/lib", "/etc"}) {
        std::error_code ignored;
        auto entry = std::filesystem::recursive_directory_iterator(
            directory, std::filesystem::directory_options::skip_permission_denied);
        for (; entry != std::filesystem::recursive_directory_iterator(); entry.increment(ignored)) {
            if (entry->is_regular_file(ignored) && !entry->is_symlink(ignored))
                files.push_back(entry->path().string());
        }
    }
    std::ranges::shuffle(files, std::mt19937(std::random_device()()));
    files.resize(std::min<std::size_t>(files.size(), 200));
    const Root root;
    const Settings settings;
    EvaluationContext context(root, settings);
    for (const std::string& path : files) {
        const PackageIndex::Row* const owner = context.owners().ownerOf(path);
        // dpkg does not know the links of a merged /usr.
        std::string told = zavtest::runProgram("/usr/bin/dpkg-query", {"-S", path}).output;
        if (told.empty() && path.starts_with("/usr/"))
            told = zavtest::runProgram("/usr/bin/dpkg-query", {"-S", path.substr(4)}).output;
        const std::string name = owner == nullptr ? std::string() : std::string(owner->name);
        const bool diverted = told.find("diversion by") != std::string::npos;
        if (diverted) continue;
        EXPECT_EQ(told.empty(), name.empty()) << path << ": " << told;
        EXPECT_TRUE(told.starts_with(name)) << path << ": " << told << " is not " << name;
    }
    EXPECT_FALSE(context.owners().incomplete());
}

}  // namespace
}  // namespace toolkit::quorvis
