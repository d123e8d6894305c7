#include "toolkit/quorvah/sources/CpuFrequency.h"

#include <cstdint>
#include <string>
#include <string_view>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kKilohertzPerMegahertz = 1000;
constexpr std::uint64_t kHertzPerMegahertz = 1'000'000;

// kHz. The directory of the CPU is a link to that of its policy, which a captured tree may lack.
Count frequencyFile(const Root& root, int cpu, const char* file) {
    const std::string cpus = "/sys/devices/system/cpu/";
    const std::string number = std::to_string(cpu);
    const Count own = root.readCount(cpus + "cpu" + number + "/cpufreq/" + file);
    return own ? own : root.readCount(cpus + "cpufreq/policy" + number + "/" + file);
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

// The fixed clock of SPARC in Hz, a hexadecimal number: "Cpu0ClkTck : 000000005f5e1000".
Count sparcClock(const CpuInfo& info, int cpu) {
    std::string_view ticks = info.value(cpu, "Cpu" + std::to_string(cpu) + "ClkTck");
    const Count hertz = readCount(nextWord(ticks), 16);
    return hertz.value_or(0) > 0 ? Count((*hertz + kHertzPerMegahertz / 2) / kHertzPerMegahertz)
                                 : std::nullopt;
}

// The clock of CPUs that have only one, in /proc/cpuinfo.
Count fixedClock(const CpuInfo& info, int cpu) {
    const Count listed = megahertz(info.value(cpu, "cpu MHz static"));
    if (listed) return listed;
    if (const Count clock = megahertz(info.value(cpu, "clock"))) return clock;
    if (info.value(cpu, "arch") == "IA-64") return megahertz(info.value(cpu, "cpu MHz"));
    if (const Count cycles = readLeadingCount(info.value(cpu, "cycle frequency [Hz]")))
        return *cycles / kHertzPerMegahertz;
    return sparcClock(info, cpu);
}

}  // namespace

Count maxClock(const Root& root, const CpuInfo& info, int cpu) {
    const Count kilohertz = frequencyFile(root, cpu, "cpuinfo_max_freq");
    return kilohertz ? Count(*kilohertz / kKilohertzPerMegahertz) : fixedClock(info, cpu);
}

Count currentClock(const Root& root, const CpuInfo& info, int cpu) {
    const Count kilohertz = frequencyFile(root, cpu, "scaling_cur_freq");
    if (kilohertz) return *kilohertz / kKilohertzPerMegahertz;
    for (const char* const key : {"cpu MHz", "CPU MHz", "cpu MHz dynamic", "clock"}) {
        const Count listed = megahertz(info.value(cpu, key));
        if (listed) return listed;
    }
    return info.lists(cpu) ? fixedClock(info, cpu) : std::nullopt;
}

}  // namespace toolkit::quorvah
