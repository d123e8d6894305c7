#include "toolkit/quorvah/sources/System.h"

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include <cstdlib>
#include <ctime>

#include "tests/support/ScratchDir.h"
#include "toolkit/machine/text/ElfMachine.h"
#include "toolkit/quorvah/sources/TimeZone.h"
#include "toolkit/quorvah/sources/Utmp.h"

using toolkit::machineOfElf;
using toolkit::Root;
using toolkit::quorvah::userSessions;
using toolkit::quorvah::zoneName;
using toolkit::quorvah::zoneOffset;

namespace {

std::string elf(char wide, char order, int machine) {
    std::string header =
        "\x7f"
        "ELF";
    header += wide;
    header += order;
    header.resize(18, '\0');
    const char low = static_cast<char>(machine & 0xFF);
    const char high = static_cast<char>(machine >> 8);
    header += order == 1 ? low : high;
    header += order == 1 ? high : low;
    return header;
}

std::string utmpRecord(int type, unsigned process, bool bigEndian, std::size_t size) {
    std::string record(size, '\0');
    record[bigEndian ? 1 : 0] = static_cast<char>(type);
    for (std::size_t i = 0; i < 4; ++i) {
        record[4 + (bigEndian ? 3 - i : i)] = static_cast<char>(process >> (8 * i) & 0xFFU);
    }
    return record;
}

}  // namespace

TEST(Kernel, OfTheLiveMachineIsThatOfUname) {
    utsname names{};
    ASSERT_EQ(uname(&names), 0);
    const toolkit::quorvah::Kernel kernel = toolkit::quorvah::readKernel(Root());
    EXPECT_EQ(kernel.name, names.sysname);
    EXPECT_EQ(kernel.release, names.release);
    EXPECT_EQ(kernel.version, names.version);
    EXPECT_EQ(kernel.machine, names.machine);
}

TEST(Kernel, MachineIsReadFromAProgramsHeader) {
    const std::tuple<char, char, int, const char*> cases[] = {
        {2, 1, 62, "x86_64"},       {1, 1, 3, "i686"},   {2, 1, 183, "aarch64"}, {2, 2, 22, "s390x"},
        {2, 1, 21, "ppc64le"},      {2, 2, 21, "ppc64"}, {1, 1, 40, "armv7l"},   {2, 1, 243, "riscv64"},
        {2, 1, 258, "loongarch64"}, {2, 1, 9999, ""},    {1, 2, 62, ""}};
    for (const auto& [wide, order, machine, name] : cases) {
        EXPECT_EQ(machineOfElf(elf(wide, order, machine)), name) << machine;
    }
    EXPECT_EQ(machineOfElf(elf(2, 1, 62).substr(0, 19)), "");
    EXPECT_EQ(machineOfElf("#!/bin/busybox sh and more text"), "");
    EXPECT_EQ(machineOfElf(""), "");
}

TEST(HostName, IsThatOfTheKernelElseOfItsFile) {
    const zavtest::ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_EQ(toolkit::quorvah::hostName(root), "");
    tree.write("etc/hostname", "file\n");
    EXPECT_EQ(toolkit::quorvah::hostName(root), "file");
    tree.write("proc/sys/kernel/hostname", "kernel\n");
    EXPECT_EQ(toolkit::quorvah::hostName(root), "kernel");
    tree.write("proc/sys/kernel/hostname", "(none)\n");
    EXPECT_EQ(toolkit::quorvah::hostName(root), "");
}

TEST(ObservationTime, OfATreeIsWhenItWasTaken) {
    const zavtest::ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_EQ(toolkit::quorvah::observationTime(root), std::nullopt);
    tree.write("proc/stat", "cpu 1 2\nbtime 1000\n");
    EXPECT_EQ(toolkit::quorvah::bootTime(root), 1000);
    EXPECT_EQ(toolkit::quorvah::observationTime(root), std::nullopt);
    tree.write("proc/uptime", "234.99 1.0\n");
    EXPECT_EQ(toolkit::quorvah::observationTime(root), 1234);
}

TEST(ObservationTime, OfTheLiveMachineIsNow) {
    const std::int64_t before = std::time(nullptr);
    const std::optional<std::int64_t> now = toolkit::quorvah::observationTime(Root());
    ASSERT_TRUE(now.has_value());
    EXPECT_GE(*now, before);
    EXPECT_LE(*now, std::time(nullptr));
}

TEST(TimeZone, FollowsTheRulesOfTheTree) {
    const Root root(QUORVAH_TEST_TREES "/x86-server");
    const struct {
        std::int64_t time;
        long minutes;
        bool summer;
    } cases[] = {{1704067200, 60, false},  // 2024-01-01
                 {1719820800, 120, true},  // 2024-07-01
                 {1711846799, 60, false},  // the last second before summer time of 2024
                 {1711846800, 120, true},
                 {4118083200, 120, true}};  // 2100-07-01, by the rule behind the table
    for (const auto& [time, minutes, summer] : cases) {
        const auto offset = zoneOffset(root, time);
        ASSERT_TRUE(offset.has_value()) << time;
        EXPECT_EQ(offset->minutes, minutes) << time;
        EXPECT_EQ(offset->daylight, summer) << time;
    }
    EXPECT_EQ(zoneName(root), "Europe/Vienna");
}

TEST(TimeZone, LeavesTheProgramsOwnZoneAsItWas) {
    ASSERT_EQ(setenv("TZ", "Asia/Tokyo", 1), 0);
    EXPECT_TRUE(zoneOffset(Root(QUORVAH_TEST_TREES "/x86-server"), 1719820800).has_value());
    EXPECT_STREQ(getenv("TZ"), "Asia/Tokyo");
    unsetenv("TZ");
    EXPECT_TRUE(zoneOffset(Root(QUORVAH_TEST_TREES "/x86-server"), 1719820800).has_value());
    EXPECT_EQ(getenv("TZ"), nullptr);
}

TEST(TimeZone, IsUnknownWithoutRulesThatCanBeRead) {
    const zavtest::ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_FALSE(zoneOffset(root, 0).has_value());
    tree.write("etc/localtime", "no zone at all");
    EXPECT_FALSE(zoneOffset(root, 0).has_value());
    EXPECT_EQ(zoneName(root), "");
}

TEST(TimeZone, NameIsWhatTheLinkNamesElseWhatIsWritten) {
    const std::pair<const char*, const char*> cases[] = {
        {"/usr/share/zoneinfo/America/Argentina/Ushuaia", "America/Argentina/Ushuaia"},
        {"../usr/share/zoneinfo/posix/UTC", "UTC"},
        {"/opt/elsewhere", "Europe/Paris"}};
    for (const auto& [link, name] : cases) {
        const zavtest::ScratchDir tree;
        tree.write("etc/timezone", "Europe/Paris\n");
        std::filesystem::create_symlink(link, tree.path() / "etc/localtime");
        EXPECT_EQ(zoneName(Root(tree.path().string())), name) << link;
    }
}

TEST(Utmp, ListsTheSessionsOfUsersWhateverTheMachine) {
    for (const bool bigEndian : {false, true}) {
        for (const std::size_t size : {std::size_t{384}, std::size_t{400}}) {
            const std::string utmp = utmpRecord(2, 1, bigEndian, size) +
                                     utmpRecord(7, 70000, bigEndian, size) +
                                     utmpRecord(8, 2, bigEndian, size) + utmpRecord(7, 3, bigEndian, size);
            EXPECT_EQ(userSessions(utmp), (std::vector<unsigned>{70000, 3})) << bigEndian << size;
        }
    }
}

TEST(Utmp, PassesOverACutLastRecord) {
    const std::string record = utmpRecord(7, 5, false, 384);
    EXPECT_EQ(userSessions(record + record.substr(0, 100)), (std::vector<unsigned>{5}));
    EXPECT_TRUE(userSessions(record.substr(0, 383)).empty());
    EXPECT_TRUE(userSessions("").empty());
}

TEST(Utmp, ASystemWithoutTheFileKeepsNoCount) {
    const zavtest::ScratchDir tree;
    EXPECT_EQ(toolkit::quorvah::countUsers(Root(tree.path().string())), std::nullopt);
    tree.write("var/run/utmp", "");
    EXPECT_EQ(toolkit::quorvah::countUsers(Root(tree.path().string())), std::size_t{0});
}
