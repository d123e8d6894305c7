#include "toolkit/quorvah/sources/KernelInfo.h"

#include <sys/utsname.h>

#include <algorithm>
#include <array>
#include <ctime>
#include <iterator>
#include <utility>

#include "toolkit/machine/files/InputFile.h"
#include "toolkit/machine/text/ElfMachine.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/CpuInfo.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

KernelInfo liveKernel() {
    utsname names{};
    if (::uname(&names) != 0) return {};
    return {names.sysname, names.release, names.version, names.machine};
}

// /proc/version: "Linux version 6.1.0 (user@host) (gcc ...) #1 SMP ..."
void readVersionFile(const Root& root, KernelInfo& kernel) {
    const std::string line = root.readLine("/proc/version");
    std::string_view rest = line;
    const std::string_view name = nextWord(rest);
    if (nextWord(rest) != "version") return;
    if (kernel.name.empty()) kernel.name = name;
    if (kernel.release.empty()) kernel.release = nextWord(rest);
    const std::size_t number = line.rfind(" #");
    if (kernel.version.empty() && number != std::string::npos) kernel.version = line.substr(number + 1);
}

// Many distributions end the release of a kernel with the name of the architecture: "5.14.0-362.el9.x86_64",
// "6.1.0-18-amd64".
std::string_view machineOfRelease(std::string_view release) {
    constexpr std::pair<std::string_view, std::string_view> kSuffixes[] = {
        {"x86_64", "x86_64"},
        {"amd64", "x86_64"},
        {"i686", "i686"},
        {"686-pae", "i686"},
        {"686", "i686"},
        {"ppc64le", "ppc64le"},
        {"powerpc64le", "ppc64le"},
        {"ppc64", "ppc64"},
        {"powerpc64", "ppc64"},
        {"powerpc64-smp", "ppc64"},
        {"powerpc", "ppc"},
        {"powerpc-smp", "ppc"},
        {"s390x", "s390x"},
        {"aarch64", "aarch64"},
        {"arm64", "aarch64"},
        {"armv7hl", "armv7l"},
        {"armmp", "armv7l"},
        {"armmp-lpae", "armv7l"},
        {"riscv64", "riscv64"},
        {"ia64", "ia64"},
        {"sparc64", "sparc64"},
        {"sparc64-smp", "sparc64"},
        {"loong64", "loongarch64"},
        {"loongarch64", "loongarch64"},
    };
    for (const auto& [suffix, machine] : kSuffixes) {
        if (!release.ends_with(suffix) || release.size() == suffix.size()) continue;
        const char before = release[release.size() - suffix.size() - 1];
        if (before == '.' || before == '-' || before == '_') return machine;
    }
    return {};
}

// What the programs of the tree are built for. They are read in this order; the first ELF file counts.
std::string_view machineOfPrograms(const Root& root) {
    for (const char* const path : {"/bin/sh", "/bin/busybox", "/sbin/init", "/usr/bin/env",
                                   "/usr/lib/systemd/systemd", "/lib/systemd/systemd", "/usr/sbin/init"}) {
        std::array<char, 20> header{};
        InputFile program(root, path);
        const std::size_t size = program.readAt(0, header);
        const std::string_view machine = machineOfElf({header.data(), size});
        if (!machine.empty()) return machine;
    }
    return {};
}

// What Alpine Linux calls the architecture.
std::string_view machineOfApk(std::string_view name) {
    constexpr std::pair<std::string_view, std::string_view> kNames[] = {
        {"x86", "i686"}, {"armhf", "armv6l"}, {"armv7", "armv7l"}};
    for (const auto& [apk, machine] : kNames) {
        if (name == apk) return machine;
    }
    constexpr std::string_view kSame[] = {"x86_64",  "aarch64",     "ppc64le", "s390x",
                                          "riscv64", "loongarch64", "mips64"};
    return std::ranges::find(kSame, name) == std::end(kSame) ? std::string_view() : name;
}

// Only a 32-bit kernel tells high memory apart.
bool hasHighMemory(const Root& root) {
    return !valueForKey(root.read("/proc/meminfo").value_or(""), "LowTotal").empty();
}

std::string machineOfTree(const Root& root, const std::string& release) {
    std::string told = root.readLine("/proc/sys/kernel/arch");
    if (told.empty()) told = machineOfRelease(release);
    if (told.empty()) told = machineOfPrograms(root);
    if (told.empty()) told = machineOfApk(root.readLine("/etc/apk/arch"));
    if (!told.empty()) return told;
    std::string machine = CpuInfo(root.read("/proc/cpuinfo").value_or("")).architecture();
    return machine == "x86_64" && hasHighMemory(root) ? "i686" : machine;
}

}  // namespace

KernelInfo readKernelInfo(const Root& root) {
    if (root.live()) return liveKernel();
    KernelInfo kernel;
    const std::string directory = "/proc/sys/kernel/";
    kernel.name = root.readLine(directory + "ostype");
    kernel.release = root.readLine(directory + "osrelease");
    kernel.version = root.readLine(directory + "version");
    readVersionFile(root, kernel);
    kernel.machine = machineOfTree(root, kernel.release);
    return kernel;
}

std::string kernelRelease(const Root& root) {
    if (root.live()) return liveKernel().release;
    KernelInfo kernel;
    kernel.release = root.readLine("/proc/sys/kernel/osrelease");
    readVersionFile(root, kernel);
    return kernel.release;
}

std::string hostName(const Root& root) {
    std::string name = root.readLine("/proc/sys/kernel/hostname");
    if (name.empty()) name = root.readLine("/etc/hostname");
    return name == "(none)" ? std::string() : name;
}

std::optional<std::int64_t> bootTime(const Root& root) {
    const std::string stat = root.read("/proc/stat").value_or("");
    return readLeadingCount(valueForKey(stat, "btime"));
}

std::optional<std::int64_t> observationTime(const Root& root) {
    if (root.live()) return std::time(nullptr);
    return sum(bootTime(root), readLeadingCount(root.readLine("/proc/uptime")));
}

}  // namespace toolkit::quorvah
