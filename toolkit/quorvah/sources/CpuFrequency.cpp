#include "toolkit/quorvah/sources/CpuFrequency.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kKilohertzPerMegahertz = 1000;

// kHz.
Count frequencyFile(const Root& root, int cpu, const char* file) {
    return root.readCount("/sys/devices/system/cpu/cpu" + std::to_string(cpu) + "/cpufreq/" + file);
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

Count maxClock(const Root& root, const CpuInfo& info, int cpu) {
    const Count kilohertz = frequencyFile(root, cpu, "cpuinfo_max_freq");
    if (kilohertz) return *kilohertz / kKilohertzPerMegahertz;
    const Count fixed = megahertz(info.value(cpu, "cpu MHz static"));
    return fixed ? fixed : megahertz(info.value(cpu, "clock"));
}

Count currentClock(const Root& root, const CpuInfo& info, int cpu) {
    const Count kilohertz = frequencyFile(root, cpu, "scaling_cur_freq");
    if (kilohertz) return *kilohertz / kKilohertzPerMegahertz;
    for (const char* const key : {"cpu MHz", "CPU MHz", "cpu MHz dynamic", "clock"}) {
        const Count listed = megahertz(info.value(cpu, key));
        if (listed) return listed;
    }
    return std::nullopt;
}

}  // namespace toolkit::quorvah
