#include <gtest/gtest.h>
#include <zlib.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/GroupTester.h"
#include "toolkit/quorvah/sources/GzipText.h"
#include "toolkit/quorvah/sources/PackageLogs.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

std::string gzipped(const ScratchDir& directory, const std::string& text) {
    const std::string path = (directory.path() / "packed.gz").string();
    const gzFile file = gzopen(path.c_str(), "wb");
    EXPECT_EQ(static_cast<int>(text.size()), gzwrite(file, text.data(), static_cast<unsigned>(text.size())));
    gzclose(file);
    return zavtest::readAll(path);
}

TEST(InstalledPatches, ReportsRecentUpgradesAndLivePatches) {
    const ScratchDir tree;
    const ScratchDir packed;
    tree.write("etc/os-release", "ID=debian\n");
    tree.write("etc/passwd",
               "root:x:0:0::/root:/bin/sh\n");  // a whole system, whose zone is UTC without rules
    tree.write("proc/stat", "btime 1700000000\n");
    tree.write("proc/uptime", "0.00 0.00\n");
    tree.write("var/log/dpkg.log",
               "2023-11-10 06:00:00 startup archives unpack\n"
               "2023-11-10 06:00:01 upgrade bash:amd64 5.2.15-2 5.2.15-2+b1\n"
               "2023-11-10 06:00:02 status installed bash:amd64 5.2.15-2+b1\n"
               "2023-11-10 06:00:03 upgrade same:all 1.0 1.0\n"
               "not a line\n");
    tree.write("var/log/dpkg.log.1", "2023-10-01 06:00:00 install new:amd64 <none> 1.0\n");
    tree.write("var/log/dpkg.log.2.gz", gzipped(packed,
                                                "2023-01-01 00:00:00 upgrade old:all 1 2\n"
                                                "2023-09-01 06:30:00 upgrade tzdata:all 2023a 2023c\n"));
    tree.write("var/log/dpkg.log.3.gz", "not packed, and older");
    tree.write("var/log/dpkg.log.bak", "2023-11-10 06:00:01 upgrade other:amd64 1 2\n");
    tree.write("sys/kernel/livepatch/kpatch_1/enabled", "1\n");
    const GroupData data = gatheredBelow(kInstalledPatches, tree.path());
    ASSERT_EQ((std::vector<std::string>{"livepatch:kpatch_1", "pkg:deb/debian/bash@5.2.15-2%2Bb1?arch=amd64",
                                        "pkg:deb/debian/tzdata@2023c?arch=all"}),
              keysOf(data));
    expectAll(kInstalledPatches, data.instances()[0],
              {{"InstanceID", "livepatch:kpatch_1"},
               {"Name", "kpatch_1"},
               {"PatchType", "livepatch"},
               {"Enabled", "true"}});
    expectAll(kInstalledPatches, data.instances()[1],
              {{"InstanceID", "pkg:deb/debian/bash@5.2.15-2%2Bb1?arch=amd64"},
               {"Name", "bash"},
               {"VersionString", "5.2.15-2+b1"},
               {"InstallDate", "2023-11-10T06:00:01Z"},
               {"PreviousVersion", "5.2.15-2"},
               {"PatchType", "package-update"}});
    EXPECT_EQ(GroupState::Complete, data.state()) << "logs behind the period are not read";
}

TEST(InstalledPatches, WithoutItsZoneATimeIsADay) {
    const ScratchDir tree;
    tree.write("var/log/dpkg.log", "2023-11-10 06:00:01 upgrade bash:amd64 1 2\n");
    const GroupData data = gatheredBelow(kInstalledPatches, tree.path());
    ASSERT_EQ(1U, data.instances().size());
    EXPECT_EQ("2023-11-10", data.instances().front().get("InstallDate"));
}

TEST(InstalledPatches, ReadsTheLogOfPacman) {
    const ScratchDir tree;
    tree.write("var/log/pacman.log",
               "[2023-11-10T12:00:00+0100] [ALPM] upgraded bash (5.2-1 -> 5.2-2)\n"
               "[2023-11-10T12:00:01+0100] [ALPM] installed vim (9.0-1)\n"
               "[2023-11-10 12:30] [PACMAN] upgraded zsh (5.8-1 -> 5.9-1)\n");
    const GroupData data = gatheredBelow(kInstalledPatches, tree.path());
    ASSERT_EQ(2U, data.instances().size());
    EXPECT_EQ("2023-11-10T11:00:00Z", data.instances()[0].get("InstallDate"));
    EXPECT_EQ("5.2-1", data.instances()[0].get("PreviousVersion"));
    EXPECT_EQ("2023-11-10", data.instances()[1].get("InstallDate"));
}

TEST(InstalledPatches, ADamagedLogIsPartial) {
    const ScratchDir tree;
    tree.write("var/log/dpkg.log", "2023-11-10 06:00:01 upgrade bash:amd64 1 2\n");
    tree.write("var/log/dpkg.log.2.gz", "not packed");
    const GroupData data = gatheredBelow(kInstalledPatches, tree.path());
    EXPECT_EQ(GroupState::Partial, data.state());
    EXPECT_EQ("logs-broken", data.reason());
}

TEST(PackageLogs, AcceptsOnlyRealTimes) {
    EXPECT_EQ(1700000000, secondsOf("2023-11-14", "22:13:20"));
    for (const char* const date : {"2023-02-29", "2023-13-01", "2023-00-01", "2023/01/01", "", "20230101  "})
        EXPECT_EQ(0, secondsOf(date, "00:00:00")) << date;
    for (const char* const time : {"24:00:00", "00:60:00", "0:00:00", "00-00-00", ""})
        EXPECT_EQ(0, secondsOf("2023-01-01", time)) << time;
}

TEST(GzipText, UnpacksSeveralMembersUpToTheLimit) {
    const ScratchDir packed;
    const std::string twice = gzipped(packed, "one\n") + gzipped(packed, "two\n");
    std::string text;
    EXPECT_TRUE(gunzip(twice, 100, text));
    EXPECT_EQ("one\ntwo\n", text);
    EXPECT_FALSE(gunzip(gzipped(packed, std::string(1000000, 'x')), 1000, text));
    EXPECT_EQ(1000U, text.size());
    for (std::size_t length = 0; length < twice.size() / 2; ++length)
        EXPECT_FALSE(gunzip(twice.substr(0, length), 100, text)) << length;
}

}  // namespace
}  // namespace toolkit::quorvah
