#include "toolkit/quorvah/sources/KernelInfo.h"

#include <sys/utsname.h>

#include <ctime>

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

std::string machineOfTree(const Root& root) {
    constexpr std::size_t kMaxShellSize = std::size_t{32} << 20;
    const std::string_view fromShell = machineOfElf(root.read("/bin/sh", kMaxShellSize).value_or(""));
    if (!fromShell.empty()) return std::string(fromShell);
    return std::string(CpuInfo(root.read("/proc/cpuinfo").value_or("")).architecture());
}

}  // namespace

KernelInfo readKernelInfo(const Root& root) {
    if (root.live()) return liveKernel();
    KernelInfo kernel;
    const std::string directory = "/proc/sys/kernel/";
    kernel.name = root.readLine(directory + "ostype");
    kernel.release = root.readLine(directory + "osrelease");
    kernel.version = root.readLine(directory + "version");
    kernel.machine = machineOfTree(root);
    readVersionFile(root, kernel);
    return kernel;
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
