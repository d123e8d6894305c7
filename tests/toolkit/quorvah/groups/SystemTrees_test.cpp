#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Expectations.h"
#include "toolkit/quorvah/groups/GroupTable.h"

using toolkit::quorvah::expectOnly;
using toolkit::quorvah::gatherFrom;
using toolkit::quorvah::gatherTree;

TEST(ComponentIDGroup, ReadsTheFirmwareTextsWithoutPlaceholders) {
    expectOnly(toolkit::quorvah::kComponentID, "x86-server",
               {{"UUID", "4c4c4544-0036-4a10-8052-b4c04f4b4d32"},
                {"Manufacturer", "Example Servers, Inc."},
                {"ProductName", "ES-2630"},
                {"SerialNumber", "CZ3402ABCD"},
                {"SKUNumber", "SKU=0716"},
                {"Name", "db1.example.com"},
                {"MachineId", "8d3c1e0bd33e4c7e9a60f1b2c3d4e5f6"},
                {"BootId", "0b5b6a44-3a4b-4c2d-8d0e-1f2a3b4c5d6e"}});
}

TEST(ComponentIDGroup, KeepsPlaceholdersWhenAskedTo) {
    const toolkit::quorvah::Report report = gatherTree(toolkit::quorvah::kComponentID, "x86-server", true);
    EXPECT_EQ(report.instances().front().get("Version"), "Default string");
    EXPECT_EQ(report.instances().front().get("Family"), "To be filled by O.E.M.");
}

TEST(ComponentIDGroup, ReadsADeviceTree) {
    expectOnly(toolkit::quorvah::kComponentID, "arm64-board",
               {{"ProductName", "Example Board Model 4 Rev 1.1"},
                {"SerialNumber", "10000000abcdef01"},
                {"Name", "board"}});
}

TEST(ComponentIDGroup, ReadsTheSysinfoOfAnS390x) {
    expectOnly(toolkit::quorvah::kComponentID, "s390x",
               {{"Manufacturer", "IBM"},
                {"ProductName", "2964"},
                {"Version", "701"},
                {"SerialNumber", "00000000000A1B2C"}});
}

TEST(MemoryGroup, JoinsWhatKernelAndFirmwareTell) {
    expectOnly(toolkit::quorvah::kMemory, "x86-server",
               {{"DeviceID", "memory"},
                {"TotalVisibleMemorySize", "65689512"},
                {"FreePhysicalMemory", "41203340"},
                {"TotalVirtualMemorySize", "74078116"},
                {"FreeVirtualMemory", "49591940"},
                {"TotalSwapSpaceSize", "8388604"},
                {"MaximumCapacity", "805306368"},
                {"NumberOfMemoryDevices", "24"},
                {"InstalledMemory", "67108864"},
                {"MemAvailable", "58123456"},
                {"NumaNodes", "2"},
                {"HugePageSize", "2048"},
                {"HugePagesTotal", "16"},
                {"ErrorCorrection", "Multi-bit ECC"}});
}

TEST(MemoryGroup, CountsOnlineBlocksWithoutFirmware) {
    const zavtest::ScratchDir tree;
    tree.write("sys/devices/system/memory/block_size_bytes", "8000000\n");
    tree.write("sys/devices/system/memory/memory0/state", "online\n");
    tree.write("sys/devices/system/memory/memory1/state", "offline\n");
    tree.write("sys/devices/system/memory/memory32/state", "online\n");
    const toolkit::quorvah::Report report = gatherFrom(toolkit::quorvah::kMemory, tree.path());
    ASSERT_EQ(report.instances().size(), 1U);
    EXPECT_EQ(report.instances().front().get("InstalledMemory"), "262144");
}

TEST(MemoryGroup, LeavesOutWhatIsNoNumber) {
    expectOnly(toolkit::quorvah::kMemory, "contradictory",
               {{"DeviceID", "memory"}, {"TotalSwapSpaceSize", "100"}});
}

TEST(OperatingSystemGroup, TellsAllOfACapturedServer) {
    expectOnly(toolkit::quorvah::kOperatingSystem, "x86-server",
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

TEST(OperatingSystemGroup, ReadsTheKernelFromItsVersionFile) {
    expectOnly(toolkit::quorvah::kOperatingSystem, "arm64-board",
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

TEST(OperatingSystemGroup, ReadsTheArchitectureOfAnImageFromItsShell) {
    expectOnly(toolkit::quorvah::kOperatingSystem, "container",
               {{"Name", "linux"},
                {"Caption", "Alpine Linux v3.19"},
                {"OSType", "36"},
                {"OtherTypeDescription", "Alpine Linux"},
                {"Id", "alpine"},
                {"VersionId", "3.19.1"},
                {"Architecture", "aarch64"},
                {"PackageManager", "apk"}});
}

TEST(OperatingSystemGroup, TakesWhatItCanFromABrokenRelease) {
    expectOnly(toolkit::quorvah::kOperatingSystem, "contradictory",
               {{"Name", "linux"}, {"OSType", "36"}, {"Id", "unfinished"}, {"VersionId", "7"}});
}

TEST(UNIXSystemParamsGroup, TellsAllOfACapturedServer) {
    expectOnly(toolkit::quorvah::kUNIXSystemParams, "x86-server",
               {{"NodeName", "db1.example.com"},
                {"SystemName", "Linux"},
                {"Release", "5.14.0-362.8.1.el9_3.x86_64"},
                {"Version", "#1 SMP PREEMPT_DYNAMIC Tue Nov 7 14:54:22 EST 2023"},
                {"Machine", "x86_64"},
                {"HostId", "12345678"},
                {"ProcessorsConfigured", "16"},
                {"ProcessorsOnline", "7"},
                {"InitSystem", "systemd"},
                {"DefaultTarget", "multi-user.target"},
                {"BootParameters",
                 "BOOT_IMAGE=(hd0,gpt2)/vmlinuz-5.14.0 root=/dev/mapper/rl-root ro crashkernel=1G "
                 "grub.password=*** rd.luks.uuid=luks-1 \"dyndbg=file a.c +p\""},
                {"RootDevice", "/dev/mapper/rl-root"},
                {"SecurityModules", "lockdown;capability;yama;selinux;bpf"},
                {"LoadAverage1", "0.52"},
                {"LoadAverage5", "0.48"},
                {"LoadAverage15", "0.40"},
                {"Uptime", "86400"}});
}

TEST(UNIXSystemParamsGroup, ReadsTheRunLevelOfTheInitOfSystemV) {
    expectOnly(toolkit::quorvah::kUNIXSystemParams, "arm64-board",
               {{"NodeName", "board"},
                {"SystemName", "Linux"},
                {"Release", "6.1.21-v8+"},
                {"Version", "#1642 SMP PREEMPT Mon Apr  3 17:24:16 BST 2023"},
                {"Machine", "aarch64"},
                {"InitSystem", "init"},
                {"DefaultTarget", "runlevel 3"}});
}

TEST(UNIXSystemParamsGroup, TakesTheRootDeviceFromTheMountsWithoutABootLoader) {
    const zavtest::ScratchDir tree;
    tree.write("proc/self/mountinfo",
               "27 1 254:0 / / rw - ext4 /dev/vda rw\n28 27 8:1 / /boot rw - ext4 /dev/sda1 rw\n");
    const toolkit::quorvah::Report report = gatherFrom(toolkit::quorvah::kUNIXSystemParams, tree.path());
    ASSERT_EQ(report.instances().size(), 1U);
    EXPECT_EQ(report.instances().front().get("RootDevice"), "/dev/vda");
}

TEST(RegionalGroup, TellsAllOfACapturedServer) {
    expectOnly(toolkit::quorvah::kRegional, "x86-server",
               {{"Locale", "de_AT.UTF-8"},
                {"CurrentTimeZone", "120"},
                {"Language", "de"},
                {"Territory", "AT"},
                {"CodeSet", "UTF-8"},
                {"TimeZoneName", "Europe/Vienna"},
                {"DaylightInEffect", "true"},
                {"KeyboardLayout", "de-nodeadkeys"},
                {"HardwareClock", "LOCAL"}});
}

TEST(RegionalGroup, ReadsTheFilesOfTheOtherDistributions) {
    expectOnly(toolkit::quorvah::kRegional, "arm64-board",
               {{"Locale", "en_GB.UTF-8"},
                {"Language", "en"},
                {"Territory", "GB"},
                {"CodeSet", "UTF-8"},
                {"TimeZoneName", "Europe/London"},
                {"KeyboardLayout", "gb"},
                {"KeyboardModel", "pc105"}});
}

TEST(RegionalGroup, TakesNoZoneFromTheHostForALinkThatLeadsNowhere) {
    expectOnly(toolkit::quorvah::kRegional, "contradictory", {{"TimeZoneName", "Mars/Olympus"}});
}

TEST(RegionalGroup, TakesTheShortFormsOfALocale) {
    const struct {
        const char* locale;
        const char* language;
        const char* territory;
        const char* codeSet;
    } cases[] = {{"C", "C", "", ""},
                 {"C.UTF-8", "C", "", "UTF-8"},
                 {"sr_RS@latin", "sr", "RS", ""},
                 {"ca_ES.ISO-8859-15@euro", "ca", "ES", "ISO-8859-15"}};
    for (const auto& [locale, language, territory, codeSet] : cases) {
        const zavtest::ScratchDir tree;
        tree.write("etc/locale.conf", std::string("LANG=") + locale + "\n");
        const toolkit::quorvah::Report report = gatherFrom(toolkit::quorvah::kRegional, tree.path());
        ASSERT_EQ(report.instances().size(), 1U) << locale;
        EXPECT_EQ(report.instances().front().get("Language"), language);
        EXPECT_EQ(report.instances().front().get("Territory"), territory);
        EXPECT_EQ(report.instances().front().get("CodeSet"), codeSet);
    }
}
