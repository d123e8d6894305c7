#include "toolkit/quorvah/sources/CpuTimes.h"

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::uint64_t kMillisecondsPerSecond = 1000;
constexpr std::size_t kMaxCpus = 100'000;

CpuTimes readTimes(std::string_view line, std::uint64_t ticksPerSecond) {
    CpuTimes times;
    times.name = nextWord(line);
    Count* const columns[] = {&times.user, &times.nice,    &times.system, &times.idle, &times.ioWait,
                              &times.irq,  &times.softIrq, &times.steal,  &times.guest};
    for (Count* const column : columns) {
        const Count milliseconds = product(readCount(nextWord(line)), kMillisecondsPerSecond);
        if (milliseconds && ticksPerSecond > 0) *column = *milliseconds / ticksPerSecond;
    }
    return times;
}

// The time of all kinds. Guests are part of the user time.
std::uint64_t total(const CpuTimes& times) {
    std::uint64_t milliseconds = 0;
    for (const Count& time : {times.user, times.nice, times.system, times.idle, times.ioWait, times.irq,
                              times.softIrq, times.steal})
        milliseconds += time.value_or(0);
    return milliseconds;
}

std::uint64_t idle(const CpuTimes& times) {
    return times.idle.value_or(0) + times.ioWait.value_or(0);
}

}  // namespace

CpuStatistics readCpuStatistics(std::string_view stat, std::uint64_t ticksPerSecond) {
    CpuStatistics statistics;
    for (std::string_view line; nextLine(stat, line);) {
        if (line.starts_with("cpu") && statistics.cpus.size() < kMaxCpus) {
            statistics.cpus.push_back(readTimes(line, ticksPerSecond));
        } else if (line.starts_with("procs_running ")) {
            nextWord(line);
            statistics.running = readCount(nextWord(line));
        }
    }
    return statistics;
}

Count loadBetween(const CpuTimes& before, const CpuTimes& after) {
    const std::uint64_t passed = total(after) - total(before);
    // The idle time of a CPU may be counted back a little.
    const std::uint64_t idled = idle(after) < idle(before) ? 0 : idle(after) - idle(before);
    if (total(after) <= total(before) || idled > passed || passed > kMaxCount / 100) return std::nullopt;
    return ((passed - idled) * 100 + passed / 2) / passed;
}

}  // namespace toolkit::quorvah
