#include "toolkit/quorvis/walk/TreeSearch.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>

#include "tests/support/ScratchDir.h"
#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/walk/MountTable.h"

namespace toolkit::quorvis {
namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

// With openat2 and with the lookup by components, which keep a walk inside of the tree.
class TreeSearchTest : public ::testing::TestWithParam<Root::Lookup> {
  protected:
    void touch(const std::string& path) { tree_.write(path, ""); }
    void link(const std::string& target, const std::string& path) {
        const fs::path place = tree_.path() / path;
        fs::create_directories(place.parent_path());
        fs::create_symlink(target, place);
    }
    std::vector<GlobHits> walk(const std::vector<GlobRequest>& requests) {
        const Root root(tree_.path().string(), GetParam());
        EvaluationContext context(root, settings_);
        return context.tree().walk(requests);
    }
    GlobHits walk(const std::string& pattern, unsigned maxDepth = 0, const std::string& exclude = "") {
        return walk({{pattern, maxDepth, exclude}}).front();
    }
    // The matches of a search. Expects it to be complete.
    Paths find(const std::string& pattern, unsigned maxDepth = 0, const std::string& exclude = "") {
        const GlobHits hits = walk(pattern, maxDepth, exclude);
        EXPECT_FALSE(hits.incomplete) << pattern;
        EXPECT_TRUE(hits.events.empty()) << pattern;
        return hits.paths;
    }
    static std::vector<EventCode> codes(const GlobHits& hits) {
        std::vector<EventCode> codes;
        for (const Event& event : hits.events) codes.push_back(event.code);
        return codes;
    }
    void expectCut(const GlobHits& hits, EventCode code) {
        EXPECT_TRUE(hits.incomplete);
        EXPECT_EQ(std::vector{code}, codes(hits));
    }

    zavtest::ScratchDir tree_;
    Settings settings_;
};

INSTANTIATE_TEST_SUITE_P(, TreeSearchTest, ::testing::Values(Root::Lookup::Kernel, Root::Lookup::ByComponent),
                         [](const auto& tested) {
                             return tested.param == Root::Lookup::Kernel ? "Kernel" : "ByComponent";
                         });

TEST_P(TreeSearchTest, PatternsFindTheirMatches) {
    for (const char* path :
         {"opt/a/x.jar", "opt/a/lib/x.jar", "opt/a/lib/deep/y.jar", "opt/b/x.jar", "opt/.c/x.jar",
          "opt/x.jar", "srv/w/libz.so.1", "srv/w/libz.so", "srv/w/z.so.1", "etc/r"})
        touch(path);
    struct Case {
        const char* pattern;
        Paths found;
    };
    const Case cases[] = {
        {"/etc/r", {"/etc/r"}},
        {"/etc/s", {}},
        {"/none/at/all/*", {}},
        {"/etc/r/*", {}},
        {"/opt/*/x.jar", {"/opt/.c/x.jar", "/opt/a/x.jar", "/opt/b/x.jar"}},
        {"/opt/?/x.jar", {"/opt/a/x.jar", "/opt/b/x.jar"}},
        {"/opt/[!a]/x.jar", {"/opt/b/x.jar"}},
        {"/opt/**/x.jar",
         {"/opt/.c/x.jar", "/opt/a/lib/x.jar", "/opt/a/x.jar", "/opt/b/x.jar", "/opt/x.jar"}},
        {"/opt/**/lib/**/*.jar", {"/opt/a/lib/deep/y.jar", "/opt/a/lib/x.jar"}},
        {"/opt/a/**",
         {"/opt/a/lib", "/opt/a/lib/deep", "/opt/a/lib/deep/y.jar", "/opt/a/lib/x.jar", "/opt/a/x.jar"}},
        {"/opt/*", {"/opt/.c", "/opt/a", "/opt/b", "/opt/x.jar"}},
        {"/srv/*/lib*.so.1", {"/srv/w/libz.so.1"}},
        {"/srv/*/*z.so", {"/srv/w/libz.so"}},
        {"/srv/*/*i*", {"/srv/w/libz.so", "/srv/w/libz.so.1"}},
        {"/{opt/b,srv/*,etc}/{x.jar,z*,r}", {"/etc/r", "/opt/b/x.jar", "/srv/w/z.so.1"}},
        {"/opt/{b,?,*}/x.jar", {"/opt/.c/x.jar", "/opt/a/x.jar", "/opt/b/x.jar"}},
    };
    std::vector<GlobRequest> requests;
    for (const Case& one : cases) {
        EXPECT_EQ(one.found, find(one.pattern)) << one.pattern;
        requests.push_back({one.pattern, 0, ""});
    }
    const std::vector<GlobHits> together = walk(requests);
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(cases[i].found, together[i].paths) << cases[i].pattern;
}

TEST_P(TreeSearchTest, LargeDirectoriesAreReadCompletely) {
    const std::string longName(240, 'n');
    for (int i = 0; i < 1200; ++i) touch("opt/" + longName + std::to_string(i));
    settings_.fileSystem.maxMatches = 2000;
    EXPECT_EQ(1200U, find("/opt/n*").size());
}

TEST_P(TreeSearchTest, ThousandsOfPatternsAreKeptApart) {
    std::vector<GlobRequest> requests;
    for (int i = 0; i < 2000; ++i) {
        const std::string n = std::to_string(i);
        requests.push_back({"/opt/**/name" + n + ".jar", 0, ""});
        requests.push_back({"/opt/*/lib" + n + "*.so.3", 0, ""});
    }
    for (const int i : {3, 77, 1999}) {
        touch("opt/p/q/name" + std::to_string(i) + ".jar");
        touch("opt/p/lib" + std::to_string(i) + "-x.so.3");
    }
    const std::vector<GlobHits> hits = walk(requests);
    for (std::size_t i = 0; i < hits.size(); ++i) {
        const std::size_t n = i / 2;
        Paths expected;
        for (const std::size_t file : {std::size_t{3}, std::size_t{77}, std::size_t{1999}}) {
            const std::string text = std::to_string(file);
            const bool same = i % 2 == 0 ? n == file : text.starts_with(std::to_string(n));
            if (!same) continue;
            expected.push_back(i % 2 == 0 ? "/opt/p/q/name" + text + ".jar"
                                          : "/opt/p/lib" + text + "-x.so.3");
        }
        EXPECT_EQ(expected, hits[i].paths) << requests[i].pattern;
    }
}

TEST_P(TreeSearchTest, AnyDepthStepsDoNotFollowLinks) {
    touch("data/sub/f");
    link("/data", "opt/l");
    link("..", "opt/up");
    link("l", "opt/chain");
    EXPECT_EQ((Paths{"/opt/chain/sub/f", "/opt/l/sub/f"}), find("/opt/*/sub/f"));
    EXPECT_EQ((Paths{"/opt/l/sub/f"}), find("/opt/l/sub/f"));
    EXPECT_EQ((Paths{"/opt/l/sub/f"}), find("/opt/l/**/f"));
    EXPECT_EQ((Paths{"/opt/l/sub/f"}), find("/opt/**/l/sub/f"));
    EXPECT_EQ((Paths{}), find("/opt/**/f"));
    EXPECT_EQ((Paths{"/opt/chain", "/opt/l", "/opt/up"}), find("/opt/**"));
}

TEST_P(TreeSearchTest, CircularLinksEnd) {
    touch("opt/a/f");
    link(".", "opt/a/self");
    link("/opt", "opt/a/top");
    link("loop", "opt/loop");
    link("/nowhere", "opt/dangling");
    EXPECT_EQ((Paths{"/opt/a/f"}), find("/opt/**/f"));
    EXPECT_EQ((Paths{"/opt/a/self/f"}), find("/opt/*/*/f"));
    EXPECT_EQ((Paths{"/opt/a/self/self/f", "/opt/a/top/a/f"}), find("/opt/a/*/*/f"));
    EXPECT_EQ((Paths{"/opt/a/top/a/f"}), find("/opt/a/top/**/f"));
    EXPECT_EQ((Paths{"/opt/dangling", "/opt/loop"}), find("/opt/{loop,dangling}"));
    EXPECT_EQ((Paths{}), find("/opt/{loop,dangling}/*"));
}

TEST_P(TreeSearchTest, NoLinkLeadsOutOfTheTree) {
    const zavtest::ScratchDir outside;
    outside.write("secret", "");
    link(outside.path().string(), "opt/absolute");
    link("../../../../../../../../../.." + outside.path().string(), "opt/relative");
    EXPECT_EQ((Paths{}), find("/opt/*/secret"));
    EXPECT_EQ((Paths{}), find("/opt/absolute/*"));
    tree_.write(outside.path().relative_path().string() + "/inside", "");
    EXPECT_EQ((Paths{"/opt/absolute/inside", "/opt/relative/inside"}), find("/opt/*/*"));
}

TEST_P(TreeSearchTest, DirectoriesOfOtherMachinesAreNotEntered) {
    for (const char* path :
         {"proc/1/f", "sys/f", "dev/f", "run/f", "var/lib/docker/f", "var/lib/containers/f", "var/lib/lxc/f",
          "home/u/.local/share/containers/f", "var/lib/other/f", "excluded/f", "data/excluded/f"})
        touch(path);
    link("/proc/1", "data/process");
    link("/", "data/all");
    link("/run", "var/run");
    settings_.fileSystem.wholeTree = true;
    settings_.fileSystem.exclude = {"/excl*", "/data/excluded"};
    EXPECT_EQ((Paths{"/var/lib/other/f"}), find("/**/f"));
    EXPECT_EQ((Paths{}), find("/{proc/1,run,var/run,var/lib/docker,data/process,excluded}/f"));
    EXPECT_EQ((Paths{}), find("/*/process/f"));
    EXPECT_EQ((Paths{}), find("/data/all/{proc/1,run,var/lib/docker,excluded,*/docker,p*/1}/f"));
    EXPECT_EQ((Paths{"/proc"}), find("/pro?"));
}

TEST_P(TreeSearchTest, ARequestSkipsWhatItExcludes) {
    touch("opt/a/f");
    touch("opt/b/f");
    touch("opt/a/test/f");
    EXPECT_EQ((Paths{"/opt/a/f", "/opt/b/f"}), find("/opt/**/f", 0, "/opt/**/test"));
    EXPECT_EQ((Paths{"/opt/b/f"}), find("/opt/**/f", 0, "/opt/a"));
    EXPECT_EQ((Paths{"/opt/a/test/f", "/opt/b/f"}), find("/opt/**/f", 0, "/opt/a/f"));
    EXPECT_EQ((Paths{}), find("/opt/a/f", 0, "/opt/*"));
    const std::vector<GlobHits> both = walk({{"/opt/**/f", 0, "/opt/a"}, {"/opt/**/f", 0, ""}});
    EXPECT_EQ(1U, both[0].paths.size());
    EXPECT_EQ(3U, both[1].paths.size()) << "what one request passes over another one finds";
}

TEST_P(TreeSearchTest, TheMaxDepthOfTheSettingsIsReported) {
    touch("opt/1/f");
    touch("opt/1/2/f");
    touch("opt/1/2/3/f");
    settings_.fileSystem.maxDepth = 3;
    const GlobHits cut = walk("/opt/**/f");
    EXPECT_EQ((Paths{"/opt/1/2/f", "/opt/1/f"}), cut.paths);
    expectCut(cut, EventCode::LimitDepth);
    EXPECT_EQ("/opt/1/2/3", cut.events[0].path);
    EXPECT_EQ((Paths{"/opt/1/2/3/f", "/opt/1/2/f"}), find("/opt/1/2/**/f"))
        << "fixed directories do not count";
    expectCut(walk("/opt/*/*/*/f"), EventCode::LimitDepth);
    EXPECT_EQ((Paths{"/opt/1/2/3/f"}), find("/opt/1/2/3/f"));
}

TEST_P(TreeSearchTest, TheMaxDepthOfARequestIsNotReported) {
    touch("opt/1/f");
    touch("opt/1/2/f");
    touch("opt/1/2/3/f");
    settings_.fileSystem.maxDepth = 1;
    EXPECT_EQ((Paths{"/opt/1/f"}), find("/opt/**/f", 2));
    EXPECT_EQ((Paths{"/opt/1/2/3/f", "/opt/1/2/f", "/opt/1/f"}), find("/opt/**/f", 4));
    const std::vector<GlobHits> both = walk({{"/opt/**/f", 2, ""}, {"/opt/**/f", 3, ""}});
    EXPECT_EQ(1U, both[0].paths.size());
    EXPECT_EQ(2U, both[1].paths.size());
}

TEST_P(TreeSearchTest, TheMaxDepthIsAtMost64) {
    std::string deep = "opt/";
    for (int i = 0; i < 70; ++i) deep += "d/";
    touch(deep + "f");
    const GlobHits hits = walk("/opt/**/f", 100);
    EXPECT_TRUE(hits.paths.empty());
    expectCut(hits, EventCode::LimitDepth);
}

TEST_P(TreeSearchTest, TooManyNamesEndTheWalkForAllRequests) {
    for (int i = 0; i < 20; ++i) touch("opt/" + std::to_string(i));
    settings_.fileSystem.maxEntries = 10;
    const std::vector<GlobHits> hits = walk({{"/opt/*", 0, ""}, {"/srv/x", 0, ""}});
    EXPECT_EQ(8U, hits[0].paths.size()) << "the others are /opt and /srv";
    expectCut(hits[0], EventCode::LimitEntries);
    expectCut(hits[1], EventCode::LimitEntries);
}

TEST_P(TreeSearchTest, TooManyNamesInADirectoryAffectItsRequestsOnly) {
    for (int i = 0; i < 20; ++i) touch("opt/" + std::to_string(i));
    touch("srv/x");
    settings_.fileSystem.maxEntriesPerDirectory = 5;
    const std::vector<GlobHits> hits = walk({{"/opt/*", 0, ""}, {"/srv/*", 0, ""}});
    EXPECT_EQ(5U, hits[0].paths.size());
    expectCut(hits[0], EventCode::LimitEntries);
    EXPECT_EQ("/opt", hits[0].events[0].path);
    EXPECT_EQ((Paths{"/srv/x"}), hits[1].paths);
    EXPECT_FALSE(hits[1].incomplete);
}

TEST_P(TreeSearchTest, OfTooManyMatchesTheFirstOnesAreKept) {
    for (int i = 10; i < 40; ++i) touch("opt/" + std::to_string(i));
    settings_.fileSystem.maxMatches = 3;
    const GlobHits hits = walk("/opt/*");
    EXPECT_EQ((Paths{"/opt/10", "/opt/11", "/opt/12"}), hits.paths);
    expectCut(hits, EventCode::LimitMatches);
    EXPECT_EQ((Paths{"/opt/11", "/opt/12", "/opt/13"}), find("/opt/1[123]"));
}

TEST_P(TreeSearchTest, NoTimeLeftIsADeadline) {
    touch("opt/f");
    settings_.evaluation.timeLimit = std::chrono::seconds(0);
    expectCut(walk("/opt/**/f"), EventCode::Deadline);
}

TEST_P(TreeSearchTest, PatternsThatMayNotBeWalkedFail) {
    touch("opt/f");
    settings_.fileSystem.maxDepth = 12;
    const std::vector<GlobHits> hits =
        walk({{"/**/f", 0, ""}, {"/opt/../f", 0, ""}, {"/opt/f", 0, "x"}, {"/opt/f", 0, ""}});
    for (std::size_t i = 0; i < 3; ++i) expectCut(hits[i], EventCode::Unsupported);
    EXPECT_EQ((Paths{"/opt/f"}), hits[3].paths);
    settings_.fileSystem.wholeTree = true;
    EXPECT_EQ((Paths{"/opt/f"}), find("/**/f"));
}

TEST_P(TreeSearchTest, DirectoriesWithoutPermissionAreReported) {
    touch("opt/closed/f");
    touch("opt/named/f");
    touch("opt/open/f");
    fs::permissions(tree_.path() / "opt/closed", fs::perms::none);
    fs::permissions(tree_.path() / "opt/named",
                    fs::perms::owner_all | fs::perms::group_exec | fs::perms::others_exec);
    fs::permissions(tree_.path(), fs::perms::all);
    const pid_t child = fork();
    if (child == 0) {
        if (geteuid() == 0 && setuid(65534) != 0) _exit(2);
        const std::vector<GlobHits> hits =
            walk({{"/opt/**/f", 0, ""}, {"/opt/*/f", 0, ""}, {"/opt/open/*", 0, ""}});
        expectCut(hits[1], EventCode::Permission);
        EXPECT_EQ("/opt/closed", hits[1].events[0].path);
        EXPECT_EQ((Paths{"/opt/named/f", "/opt/open/f"}), hits[1].paths) << "a known name needs no list";
        EXPECT_TRUE(hits[0].incomplete);
        std::set<std::string> reported;
        for (const Event& event : hits[0].events) reported.insert(event.path);
        EXPECT_TRUE(reported.contains("/opt/closed") && reported.contains("/opt/named"));
        EXPECT_FALSE(hits[2].incomplete);
        _exit(HasFailure() ? 1 : 0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    fs::permissions(tree_.path() / "opt/closed", fs::perms::all);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));
}

// Runs in a process with its own mounts. Skipped where that is not permitted.
class WalkAcrossMounts : public TreeSearchTest {
  protected:
    template <typename Check>
    void withMounts(const Check& check) {
        const pid_t child = fork();
        if (child == 0) {
            if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
                _exit(77);
            check();
            _exit(HasFailure() ? 1 : 0);
        }
        int status = 0;
        waitpid(child, &status, 0);
        ASSERT_TRUE(WIFEXITED(status));
        if (WEXITSTATUS(status) == 77) GTEST_SKIP() << "mounts of its own are not allowed to this process";
        EXPECT_EQ(0, WEXITSTATUS(status));
    }
    void mountAt(const char* path, const char* type, const std::string& source, unsigned long flags) {
        const fs::path place = tree_.path() / path;
        fs::create_directories(place);
        if (mount(source.c_str(), place.c_str(), type, flags, nullptr) == 0) return;
        _exit(errno == EPERM || errno == ENODEV ? 77 : 1);
    }
    // A lookup below this mount waits for a program that never answers.
    void mountRemoteAt(const char* path) {
        int ends[2];
        if (pipe(ends) != 0) _exit(2);
        const std::string options = "fd=" + std::to_string(ends[1]) + ",pgrp=" + std::to_string(getpgrp()) +
                                    ",minproto=5,maxproto=5,direct";
        const fs::path place = tree_.path() / path;
        fs::create_directories(place);
        if (mount("test", place.c_str(), "autofs", 0, options.c_str()) != 0) _exit(77);
    }
};

INSTANTIATE_TEST_SUITE_P(, WalkAcrossMounts,
                         ::testing::Values(Root::Lookup::Kernel, Root::Lookup::ByComponent),
                         [](const auto& tested) {
                             return tested.param == Root::Lookup::Kernel ? "Kernel" : "ByComponent";
                         });

TEST_P(WalkAcrossMounts, OtherLocalFileSystemsAreEnteredUnlessTheSettingsForbidIt) {
    withMounts([this] {
        touch("opt/f");
        mountAt("opt/disk", "tmpfs", "none", 0);
        touch("opt/disk/f");
        link("/opt/disk", "opt/alias");
        EXPECT_EQ((Paths{"/opt/disk/f", "/opt/f"}), find("/opt/**/f"));
        EXPECT_EQ((Paths{"/opt/alias/f", "/opt/disk/f"}), find("/opt/*/f"));
        settings_.fileSystem.crossDevices = false;
        EXPECT_EQ((Paths{"/opt/f"}), find("/opt/**/f"));
        EXPECT_EQ((Paths{}), find("/opt/*/f"));
    });
}

TEST_P(WalkAcrossMounts, ADirectoryMountedInsideOfItselfIsALoop) {
    withMounts([this] {
        touch("opt/a/f");
        mountAt("opt/a/again", nullptr, (tree_.path() / "opt").string(), MS_BIND);
        const GlobHits hits = walk("/opt/**/f");
        EXPECT_EQ((Paths{"/opt/a/f"}), hits.paths);
        EXPECT_EQ(std::vector{EventCode::Loop}, codes(hits));
        EXPECT_FALSE(hits.incomplete) << "what is there has been seen";
    });
}

TEST_P(WalkAcrossMounts, LoopsAreDetectedInEveryThread) {
    withMounts([this] {
        for (int i = 0; i < 144; ++i)
            touch("opt/a" + std::to_string(i / 12) + "/b" + std::to_string(i % 12) + "/f");
        for (int i = 0; i < 8; ++i)
            mountAt(("opt/a" + std::to_string(i) + "/b7/again").c_str(), nullptr,
                    (tree_.path() / "opt").string(), MS_BIND);
        for (const unsigned jobs : {1U, 2U, 8U}) {
            settings_.evaluation.jobs = jobs;
            const GlobHits hits = walk("/opt/**/f");
            EXPECT_EQ(144U, hits.paths.size());
            EXPECT_EQ(std::vector(8, EventCode::Loop), codes(hits));
            EXPECT_FALSE(hits.incomplete);
        }
    });
}

TEST_P(WalkAcrossMounts, RemoteFileSystemsAreSkippedUnlessTheSettingsAllowThem) {
    withMounts([this] {
        touch("opt/f");
        mountRemoteAt("opt/net");
        mountRemoteAt("data/far");
        link("/opt/net", "opt/alias");
        link("/data", "opt/data");
        for (const char* pattern : {"/opt/net/*", "/opt/alias/*", "/opt/n*/f", "/opt/a*/f", "/opt/ne?",
                                    "/opt/net", "/opt/data/far/f", "/opt/data/f*/f", "/opt/data/fa?",
                                    "/opt/data/far", "/opt/data/**/f", "/opt/d*/far/*"}) {
            const GlobHits hits = walk(pattern);
            EXPECT_TRUE(hits.paths.empty()) << pattern;
            EXPECT_TRUE(hits.incomplete) << pattern;
            EXPECT_EQ(std::vector{EventCode::RemoteSkipped}, codes(hits)) << pattern;
        }
        EXPECT_EQ((Paths{"/opt/f"}), find("/opt/f"));
    });
}

TEST(IsRemoteFileSystem, NetworksAndProgramsAre) {
    for (const char* type : {"nfs", "nfs4", "cifs", "smb3", "fuse.sshfs", "autofs", "9p", "ceph"})
        EXPECT_TRUE(isRemoteFileSystem(type)) << type;
    for (const char* type : {"ext4", "xfs", "btrfs", "tmpfs", "overlay", "squashfs", "fuseblk", "zfs"})
        EXPECT_FALSE(isRemoteFileSystem(type)) << type;
}

TEST(TreeSearchOnTheLiveMachine, FindsFilesAndKeepsOutOfProc) {
    const zavtest::ScratchDir dir;
    dir.write("a/b/f", "");
    fs::create_symlink("/proc/self", dir.path() / "process");
    fs::permissions(dir.path(), fs::perms(0755));
    const Root root;
    const Settings settings;
    EvaluationContext context(root, settings);
    const std::string base = dir.path().string();
    EXPECT_EQ((Paths{base + "/a/b/f"}), context.tree().hits({base + "/**/f", 0, ""}).paths);
    EXPECT_EQ((Paths{}), context.tree().hits({base + "/*/stat*", 0, ""}).paths);
}

}  // namespace
}  // namespace toolkit::quorvis
