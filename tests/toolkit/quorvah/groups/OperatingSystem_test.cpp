#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

TEST(OperatingSystem, ReportsACapturedServer) {
    expectOnly(kOperatingSystem, "x86-server",
               {{"Name", "linux"},
                {"Caption", "Rocky Linux 9.3 (Blue Onyx)"},
                {"Version", "5.14.0-362.8.1.el9_3.x86_64"},
                {"OSType", "36"},
                {"OtherTypeDescription", "Rocky Linux"},
                {"CSName", "db1.example.com"},
                {"LastBootUpTime", "2024-07-01T08:00:00Z"},
                {"LocalDateTime", "2024-07-02T08:00:00Z"},
                {"CurrentTimeZone", "120"},
                {"NumberOfUsers", "2"},
                {"NumberOfProcesses", "3"},
                {"MaxNumberOfProcesses", "4194304"},
                {"MaxProcessMemorySize", "137438953472"},
                {"Id", "rocky"},
                {"IdLike", "rhel;centos;fedora"},
                {"VersionId", "9.3"},
                {"BuildId", "20231108"},
                {"KernelVersion", "#1 SMP PREEMPT_DYNAMIC Tue Nov 7 14:54:22 EST 2023"},
                {"Architecture", "x86_64"},
                {"PackageManager", "rpm"}});
}

TEST(OperatingSystem, ReadsTheKernelFromItsVersionFile) {
    expectOnly(kOperatingSystem, "arm64-board",
               {{"Name", "linux"},
                {"Caption", "Debian GNU/Linux 11 (bullseye)"},
                {"Version", "6.1.21-v8+"},
                {"OSType", "36"},
                {"OtherTypeDescription", "Debian GNU/Linux"},
                {"CSName", "board"},
                {"Id", "debian"},
                {"VersionId", "11"},
                {"Codename", "bullseye"},
                {"KernelVersion", "#1642 SMP PREEMPT Mon Apr  3 17:24:16 BST 2023"},
                {"Architecture", "aarch64"},
                {"PackageManager", "dpkg"}});
}

TEST(OperatingSystem, ReadsTheArchitectureOfAnImageFromItsShell) {
    expectOnly(kOperatingSystem, "container",
               {{"Name", "linux"},
                {"Caption", "Alpine Linux v3.19"},
                {"OSType", "36"},
                {"OtherTypeDescription", "Alpine Linux"},
                {"Id", "alpine"},
                {"VersionId", "3.19.1"},
                {"Architecture", "aarch64"},
                {"PackageManager", "apk"}});
}

TEST(OperatingSystem, ReadsTheValidLinesOfADamagedReleaseFile) {
    expectOnly(kOperatingSystem, "contradictory",
               {{"Name", "linux"}, {"OSType", "36"}, {"Id", "unfinished"}, {"VersionId", "7"}});
}

TEST(OperatingSystem, ReadsOlderFilesWhereThereIsNoReleaseFile) {
    const zavtest::ScratchDir tree;
    tree.write("etc/debian_version", "trixie/sid\n");
    GroupData data = gatheredBelow(kOperatingSystem, tree.path());
    EXPECT_EQ("debian", data.instances().front().get("Id"));
    EXPECT_EQ("", data.instances().front().get("VersionId"));
    tree.write("etc/alpine-release", "3.19.1\n");
    data = gatheredBelow(kOperatingSystem, tree.path());
    EXPECT_EQ("alpine", data.instances().front().get("Id"));
    EXPECT_EQ("3.19.1", data.instances().front().get("VersionId"));
    tree.write("usr/lib/os-release", "ID=postmarketos\n");
    data = gatheredBelow(kOperatingSystem, tree.path());
    EXPECT_EQ("postmarketos", data.instances().front().get("Id"));
    EXPECT_EQ("", data.instances().front().get("VersionId"));
}

TEST(OperatingSystemLive, MatchesTheReleaseFileAndUname) {
    const GroupData data = gatheredLive(kOperatingSystem);
    ASSERT_EQ(data.instances().size(), 1U);
    const Instance& system = data.instances().front();
    const auto release = [](const std::string& name) {
        return lineOf(". /etc/os-release; echo \"$" + name + "\"");
    };
    EXPECT_EQ(system.get("Caption"), release("PRETTY_NAME"));
    EXPECT_EQ(system.get("OtherTypeDescription"), release("NAME"));
    EXPECT_EQ(system.get("Id"), release("ID"));
    EXPECT_EQ(system.get("VersionId"), release("VERSION_ID"));
    EXPECT_EQ(system.get("Codename"), release("VERSION_CODENAME"));
    EXPECT_EQ(system.get("Version"), lineOf("uname -r"));
    EXPECT_EQ(system.get("KernelVersion"), lineOf("uname -v"));
    EXPECT_EQ(system.get("Architecture"), lineOf("uname -m"));
    EXPECT_EQ(system.get("CSName"), lineOf("uname -n"));
}

TEST(OperatingSystemLive, TimeMatchesDate) {
    const GroupData data = gatheredLive(kOperatingSystem);
    const Instance& system = data.instances().front();
    const std::string boot = system.get("LastBootUpTime");
    EXPECT_LT(boot, lineOf("date -u +%Y-%m-%dT%H:%M:%SZ"));
    EXPECT_EQ(boot, lineOf("date -u -d @$(awk '/^btime/ {print $2}' /proc/stat) +%Y-%m-%dT%H:%M:%SZ"));
    const std::string zone = lineOf("env -u TZ date +%z");  // "+0130"
    const int sign = zone[0] == '-' ? -1 : 1;
    const int minutes = sign * (std::stoi(zone.substr(1, 2)) * 60 + std::stoi(zone.substr(3, 2)));
    EXPECT_EQ(system.get("CurrentTimeZone"), std::to_string(minutes));
    EXPECT_EQ(gatheredLive(kRegional).instances().front().get("CurrentTimeZone"), std::to_string(minutes));
}

}  // namespace
}  // namespace toolkit::quorvah
