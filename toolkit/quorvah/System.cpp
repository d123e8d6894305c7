#include "toolkit/quorvah/System.h"

#include <sys/utsname.h>

#include <ctime>

#include "toolkit/machine/Lines.h"
#include "toolkit/quorvah/CpuInfo.h"
#include "toolkit/quorvah/Words.h"

namespace toolkit::quorvah {

namespace {

struct ElfMachine {
    unsigned number;
    bool wide;  // 64 bits
    bool littleEndian;
    std::string_view name;
};

constexpr ElfMachine kElfMachines[] = {
    {3, false, true, "i686"},         {8, false, false, "mips"},     {8, false, true, "mipsel"},
    {8, true, false, "mips64"},       {8, true, true, "mips64el"},   {20, false, false, "ppc"},
    {21, true, false, "ppc64"},       {21, true, true, "ppc64le"},   {22, true, false, "s390x"},
    {40, false, true, "armv7l"},      {62, true, true, "x86_64"},    {62, false, true, "x86_64"},
    {183, true, true, "aarch64"},     {243, false, true, "riscv32"}, {243, true, true, "riscv64"},
    {258, true, true, "loongarch64"},
};

Kernel liveKernel() {
    utsname names{};
    if (::uname(&names) != 0) return {};
    return {names.sysname, names.release, names.version, names.machine};
}

// "Linux version 6.1.0 (user@host) (gcc ...) #1 SMP ..."
void readVersionFile(const Root& root, Kernel& kernel) {
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
    constexpr std::size_t kLargestShell = std::size_t{32} << 20;
    const std::string_view fromShell = machineOfElf(root.read("/bin/sh", kLargestShell).value_or(""));
    if (!fromShell.empty()) return std::string(fromShell);
    return std::string(CpuInfo(root.read("/proc/cpuinfo").value_or("")).architecture());
}

}  // namespace

std::string_view machineOfElf(std::string_view header) {
    if (header.size() < 20 || !header.starts_with("\x7f"
                                                  "ELF"))
        return {};
    const auto byte = [header](std::size_t at) {
        return static_cast<unsigned>(static_cast<unsigned char>(header[at]));
    };
    const bool littleEndian = byte(5) == 1;
    const unsigned number = littleEndian ? byte(18) | byte(19) << 8U : byte(18) << 8U | byte(19);
    for (const ElfMachine& machine : kElfMachines) {
        if (machine.number == number && machine.wide == (byte(4) == 2) &&
            machine.littleEndian == littleEndian) {
            return machine.name;
        }
    }
    return {};
}

Kernel readKernel(const Root& root) {
    if (root.live()) return liveKernel();
    Kernel kernel;
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
    return leadingNumber(valueOf(stat, "btime"));
}

std::optional<std::int64_t> observationTime(const Root& root) {
    if (root.live()) return std::time(nullptr);
    const std::optional<std::int64_t> boot = bootTime(root);
    const std::optional<std::int64_t> uptime = leadingNumber(root.readLine("/proc/uptime"));
    if (!boot || !uptime) return std::nullopt;
    return *boot + *uptime;
}

}  // namespace toolkit::quorvah
