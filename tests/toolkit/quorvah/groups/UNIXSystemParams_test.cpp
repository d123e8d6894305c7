#include <gtest/gtest.h>

#include "tests/support/ScratchDir.h"
#include "tests/toolkit/quorvah/Commands.h"
#include "tests/toolkit/quorvah/GroupTester.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

TEST(UNIXSystemParams, ReportsACapturedServer) {
    expectOnly(kUNIXSystemParams, "x86-server",
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

TEST(UNIXSystemParams, ReadsTheRunLevelOfTheInitOfSystemV) {
    expectOnly(kUNIXSystemParams, "arm64-board",
               {{"NodeName", "board"},
                {"SystemName", "Linux"},
                {"Release", "6.1.21-v8+"},
                {"Version", "#1642 SMP PREEMPT Mon Apr  3 17:24:16 BST 2023"},
                {"Machine", "aarch64"},
                {"ProcessorsConfigured", "4"},
                {"ProcessorsOnline", "4"},
                {"InitSystem", "init"},
                {"DefaultTarget", "runlevel 3"}});
}

TEST(UNIXSystemParams, ReadsTheRootDeviceFromTheMountsWithoutBootParameter) {
    const ScratchDir tree;
    tree.write("proc/self/mountinfo",
               "27 1 254:0 / / rw - ext4 /dev/vda rw\n28 27 8:1 / /boot rw - ext4 /dev/sda1 rw\n");
    const GroupData data = gatheredBelow(kUNIXSystemParams, tree.path());
    ASSERT_EQ(data.instances().size(), 1U);
    EXPECT_EQ(data.instances().front().get("RootDevice"), "/dev/vda");
}

TEST(UNIXSystemParams, CountsTheProcessorsOfAKernelWithoutLists) {
    const ScratchDir tree;
    tree.write("proc/cpuinfo", "processor\t: 0\n\nprocessor\t: 2\n");
    for (const char* const cpu : {"cpu0", "cpu1", "cpu2"})
        tree.write("sys/devices/system/cpu/" + std::string(cpu) + "/crash_notes", "0\n");
    tree.write("sys/devices/system/cpu/cpu1/online", "0\n");
    const GroupData data = gatheredBelow(kUNIXSystemParams, tree.path());
    ASSERT_EQ(data.instances().size(), 1U);
    EXPECT_EQ(data.instances().front().get("ProcessorsConfigured"), "3");
    EXPECT_EQ(data.instances().front().get("ProcessorsOnline"), "2");
}

std::string initIn(const ScratchDir& tree) {
    const GroupData data = gatheredBelow(kUNIXSystemParams, tree.path());
    return data.instances().empty() ? "none" : data.instances().front().get("InitSystem");
}

TEST(UNIXSystemParams, TheRootDeviceOfAContainerIsNotThatOfTheMachine) {
    const zavtest::ScratchDir tree;
    tree.write("proc/cmdline", "root=/dev/sda1 ro\n");
    tree.write("proc/self/mountinfo", "711 640 0:55 / / rw - overlay overlay rw,lowerdir=/a\n");
    EXPECT_EQ(gatheredBelow(kUNIXSystemParams, tree.path()).instances().front().get("RootDevice"),
              "/dev/sda1");
    tree.write(".dockerenv", "");
    EXPECT_EQ(gatheredBelow(kUNIXSystemParams, tree.path()).instances().front().get("RootDevice"), "overlay");
}

TEST(InitSystem, IsTheFirstProcessAndNotTheProgramThatALinkNames) {
    const ScratchDir tree;
    tree.link("sbin/init", "/lib/systemd/systemd");
    EXPECT_EQ(initIn(tree), "systemd");
    tree.write("proc/1/comm", "runit\n");
    EXPECT_EQ(initIn(tree), "runit");
    tree.write("proc/1/comm", "init\n");
    EXPECT_EQ(initIn(tree), "init");
    tree.write("proc/1/cmdline", std::string("init [2]\0", 9));
    EXPECT_EQ(initIn(tree), "init");
}

TEST(InitSystem, IsTheProgramBehindTheNameThatItWasStartedWith) {
    const ScratchDir tree;
    tree.write("proc/1/comm", "init\n");
    tree.write("proc/1/cmdline", std::string("/sbin/init\0splash\0", 18));
    tree.link("sbin/init", "/bin/busybox");
    EXPECT_EQ(initIn(tree), "busybox");
}

TEST(InitSystemLive, IsTheNameOfTheFirstProcess) {
    const std::string name = lineOf("cat /proc/1/comm");
    const std::string ours = gatheredLive(kUNIXSystemParams).instances().front().get("InitSystem");
    EXPECT_EQ(ours, name == "init" ? ours : name);
}

TEST(UNIXSystemParamsLive, MatchUnameAndGetconf) {
    const GroupData data = gatheredLive(kUNIXSystemParams);
    ASSERT_EQ(data.instances().size(), 1U);
    const Instance& system = data.instances().front();
    const std::pair<const char*, const char*> commands[] = {
        {"NodeName", "uname -n"},
        {"SystemName", "uname -s"},
        {"Release", "uname -r"},
        {"Version", "uname -v"},
        {"Machine", "uname -m"},
        {"PageSize", "getconf PAGE_SIZE"},
        {"OpenMax", "getconf OPEN_MAX"},
        {"ArgMax", "getconf ARG_MAX"},
        {"ChildMax", "getconf CHILD_MAX"},
        {"ClockTicksPerSecond", "getconf CLK_TCK"},
        {"ProcessorsConfigured", "getconf _NPROCESSORS_CONF"},
        {"ProcessorsOnline", "getconf _NPROCESSORS_ONLN"},
    };
    for (const auto& [field, command] : commands) EXPECT_EQ(system.get(field), lineOf(command)) << field;
}

}  // namespace
}  // namespace toolkit::quorvah
