#include "toolkit/quorvah/sources/KernelInfo.h"

#include <gtest/gtest.h>
#include <sys/utsname.h>

#include <ctime>

#include "tests/support/ScratchDir.h"
#include "toolkit/machine/text/ElfMachine.h"

namespace toolkit::quorvah {
namespace {

using zavtest::ScratchDir;

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

TEST(KernelInfo, OfTheLiveMachineMatchesUname) {
    utsname names{};
    ASSERT_EQ(uname(&names), 0);
    const KernelInfo kernel = readKernelInfo(Root());
    EXPECT_EQ(kernel.name, names.sysname);
    EXPECT_EQ(kernel.release, names.release);
    EXPECT_EQ(kernel.version, names.version);
    EXPECT_EQ(kernel.machine, names.machine);
}

TEST(KernelInfo, MachineIsReadFromAProgramsHeader) {
    const std::tuple<char, char, int, const char*> cases[] = {
        {2, 1, 62, "x86_64"},       {1, 1, 3, "i686"},         {2, 1, 183, "aarch64"}, {2, 2, 22, "s390x"},
        {2, 1, 21, "ppc64le"},      {2, 2, 21, "ppc64"},       {1, 1, 40, "armv7l"},   {2, 1, 243, "riscv64"},
        {2, 1, 258, "loongarch64"}, {2, 1, 50, "ia64"},        {2, 2, 43, "sparc64"},  {1, 2, 18, "sparc64"},
        {2, 1, 0x9026, "alpha"},    {2, 2, 183, "aarch64_be"}, {2, 1, 9999, ""},       {1, 2, 62, ""}};
    for (const auto& [wide, order, machine, name] : cases) {
        EXPECT_EQ(machineOfElf(elf(wide, order, machine)), name) << machine;
    }
    EXPECT_EQ(machineOfElf(elf(2, 1, 62).substr(0, 19)), "");
    EXPECT_EQ(machineOfElf("#!/bin/busybox sh and more text"), "");
    EXPECT_EQ(machineOfElf(""), "");
}

std::string machineOf(const ScratchDir& tree) {
    return readKernelInfo(Root(tree.path().string())).machine;
}

TEST(KernelInfo, TheMachineOfATreeIsToldByItsKernelThenItsProgramsThenItsCpus) {
    const ScratchDir tree;
    EXPECT_EQ(machineOf(tree), "");
    tree.write("proc/cpuinfo", "processor: 0\nflags: fpu lm\n");
    EXPECT_EQ(machineOf(tree), "x86_64");
    tree.write("proc/meminfo", "MemTotal: 900000 kB\nLowTotal: 800000 kB\n");
    EXPECT_EQ(machineOf(tree), "i686");
    tree.write("etc/apk/arch", "armhf\n");
    EXPECT_EQ(machineOf(tree), "armv6l");
    tree.write("etc/apk/arch", "riscv64\n");
    EXPECT_EQ(machineOf(tree), "riscv64");
    tree.write("etc/apk/arch", "somewhat\n");
    EXPECT_EQ(machineOf(tree), "i686");
    tree.write("bin/sh", "#!/bin/busybox sh, and more text");
    tree.write("sbin/init", elf(2, 1, 183));
    EXPECT_EQ(machineOf(tree), "aarch64");
    tree.write("proc/sys/kernel/osrelease", "4.18.0-513.el8.ppc64le\n");
    EXPECT_EQ(machineOf(tree), "ppc64le");
    tree.write("proc/sys/kernel/arch", "s390x\n");
    EXPECT_EQ(machineOf(tree), "s390x");
}

TEST(KernelInfo, TheReleaseOfAKernelMayNameTheMachine) {
    const std::pair<const char*, const char*> cases[] = {
        {"6.1.0-18-amd64", "x86_64"},
        {"2.6.32-5-686", "i686"},
        {"5.10.0-9-686-pae", "i686"},
        {"6.1.0-9-arm64", "aarch64"},
        {"6.1.0-9-armmp", "armv7l"},
        {"5.15.0-91-generic", ""},
        {"4.14.0-115.el7a.ppc64le", "ppc64le"},
        {"3.10.0.ppc64", "ppc64"},
        {"x86_64", ""},
        {"6.1amd64", ""},
    };
    for (const auto& [release, machine] : cases) {
        const ScratchDir tree;
        tree.write("proc/sys/kernel/osrelease", release);
        EXPECT_EQ(machineOf(tree), machine) << release;
    }
}

TEST(HostName, IsThatOfTheKernelOrElseOfTheFile) {
    const ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_EQ(hostName(root), "");
    tree.write("etc/hostname", "file\n");
    EXPECT_EQ(hostName(root), "file");
    tree.write("proc/sys/kernel/hostname", "kernel\n");
    EXPECT_EQ(hostName(root), "kernel");
    tree.write("proc/sys/kernel/hostname", "(none)\n");
    EXPECT_EQ(hostName(root), "");
}

TEST(ObservationTime, OfATreeIsTheTimeOfCapture) {
    const ScratchDir tree;
    const Root root(tree.path().string());
    EXPECT_EQ(observationTime(root), std::nullopt);
    tree.write("proc/stat", "cpu 1 2\nbtime 1000\n");
    EXPECT_EQ(bootTime(root), 1000);
    EXPECT_EQ(observationTime(root), std::nullopt);
    tree.write("proc/uptime", "234.99 1.0\n");
    EXPECT_EQ(observationTime(root), 1234);
}

TEST(ObservationTime, OfTheLiveMachineIsNow) {
    const std::int64_t before = std::time(nullptr);
    const std::optional<std::int64_t> now = observationTime(Root());
    ASSERT_TRUE(now.has_value());
    EXPECT_GE(*now, before);
    EXPECT_LE(*now, std::time(nullptr));
}

}  // namespace
}  // namespace toolkit::quorvah
