#include "toolkit/quorvah/sources/CpuNames.h"

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/Words.h"

namespace toolkit::quorvah {

namespace {

// "0x41" without the prefix.
std::string_view withoutPrefix(std::string_view hex) {
    if (hex.starts_with("0x")) hex.remove_prefix(2);
    return hex;
}

// Variant 0x3 and revision 1 are written r3p1 in the makers' documents.
std::string armStepping(std::string_view variant, std::string_view revision) {
    if (variant.empty() || revision.empty()) return {};
    return "r" + std::string(withoutPrefix(variant)) + "p" + std::string(revision);
}

CpuNames armNames(const CpuInfo& info, int cpu) {
    const std::string_view implementer = withoutPrefix(info.value(cpu, "CPU implementer"));
    const std::string_view part = withoutPrefix(info.value(cpu, "CPU part"));
    CpuNames names;
    names.name = armPart(implementer, part);
    if (names.name.empty()) names.name = info.value(cpu, "model name");
    names.manufacturer = armImplementer(implementer);
    names.family = info.value(cpu, "CPU architecture");
    names.model = part;
    names.stepping = armStepping(info.value(cpu, "CPU variant"), info.value(cpu, "CPU revision"));
    return names;
}

// "POWER9 (architected), altivec supported" and "2.2 (pvr 004e 1202)"
CpuNames powerNames(const CpuInfo& info, int cpu) {
    CpuNames names;
    std::string_view name = info.value(cpu, "cpu");
    names.name = takeField(name, ',');
    names.manufacturer = "IBM";
    std::string_view revision = info.value(cpu, "revision");
    names.stepping = nextWord(revision);
    if (nextWord(revision) == "(pvr") names.model = nextWord(revision);
    return names;
}

// The lines of all CPUs stand before the first one:
//     processor 0: version = FF,  identification = 0133E8,  machine = 2964
CpuNames s390Names(const CpuInfo& info, int cpu) {
    CpuNames names;
    names.manufacturer = "IBM";
    names.name = info.value(cpu, "vendor_id");
    std::string_view line = info.value(cpu, "processor " + std::to_string(cpu));
    while (!line.empty()) {
        std::string_view value = takeField(line, ',');
        const std::string_view key = trimmed(takeField(value, '='));
        if (key == "machine") names.model = trimmed(value);
        if (key == "version") names.stepping = trimmed(value);
    }
    if (!names.model.empty()) names.name += " " + names.model;
    return names;
}

CpuNames riscvNames(const CpuInfo& info, int cpu) {
    CpuNames names;
    names.name = info.value(cpu, "uarch");
    names.manufacturer = withoutPrefix(info.value(cpu, "mvendorid"));
    names.model = withoutPrefix(info.value(cpu, "marchid"));
    names.stepping = withoutPrefix(info.value(cpu, "mimpid"));
    return names;
}

CpuNames x86Names(const CpuInfo& info, int cpu) {
    CpuNames names;
    names.name = info.value(cpu, "model name");
    if (names.name.empty()) names.name = info.value(cpu, "Model Name");
    names.manufacturer = info.value(cpu, "vendor_id");
    names.family = info.value(cpu, "cpu family");
    names.model = info.value(cpu, "model");
    names.stepping = info.value(cpu, "stepping");
    return names;
}

const std::string kCpu = "/sys/devices/system/cpu/cpu";

constexpr std::uint64_t kKilo = 1000;

// kHz.
Count frequencyFile(const Root& root, int cpu, const char* file) {
    return root.readCount(kCpu + std::to_string(cpu) + "/cpufreq/" + file);
}

// The nearest whole number of "2596.152" or "2900.000000MHz".
Count megahertz(std::string_view text) {
    if (text.ends_with("MHz")) text.remove_suffix(3);
    const Count number = readLeadingCount(text);
    const std::size_t point = text.find('.');
    const bool up = point != std::string_view::npos && point + 1 < text.size() && text[point + 1] >= '5';
    const Count rounded = sum(number, up ? 1 : 0);
    return rounded.value_or(0) > 0 ? rounded : std::nullopt;
}

}  // namespace

CpuNames readCpuNames(const CpuInfo& info, int cpu) {
    if (!info.value(cpu, "CPU implementer").empty()) return armNames(info, cpu);
    if (info.value(cpu, "vendor_id") == "IBM/S390") return s390Names(info, cpu);
    if (!info.value(cpu, "isa").empty()) return riscvNames(info, cpu);
    if (info.value(cpu, "cpu").starts_with("POWER")) return powerNames(info, cpu);
    return x86Names(info, cpu);
}

std::string microcode(const Root& root, const CpuInfo& info, int cpu) {
    const std::string_view listed = info.value(cpu, "microcode");
    if (!listed.empty()) return std::string(listed);
    return root.readLine(kCpu + std::to_string(cpu) + "/microcode/version");
}

Count maxClock(const Root& root, const CpuInfo& info, int cpu) {
    const Count kilohertz = frequencyFile(root, cpu, "cpuinfo_max_freq");
    if (kilohertz) return *kilohertz / kKilo;
    const Count fixed = megahertz(info.value(cpu, "cpu MHz static"));
    return fixed ? fixed : megahertz(info.value(cpu, "clock"));
}

Count currentClock(const Root& root, const CpuInfo& info, int cpu) {
    const Count kilohertz = frequencyFile(root, cpu, "scaling_cur_freq");
    if (kilohertz) return *kilohertz / kKilo;
    for (const char* const key : {"cpu MHz", "CPU MHz", "cpu MHz dynamic", "clock"}) {
        const Count listed = megahertz(info.value(cpu, key));
        if (listed) return listed;
    }
    return std::nullopt;
}

}  // namespace toolkit::quorvah
