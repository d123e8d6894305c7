#include "toolkit/quorvah/sources/Utmp.h"

#include <algorithm>
#include <cstdint>
#include <string>

#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit::quorvah {

namespace {

// The size of a record on most machines, and on 64-bit machines that never ran 32-bit programs.
constexpr std::size_t kRecord = 384;
constexpr std::size_t kWideRecord = 400;

constexpr unsigned kUserProcess = 7;

unsigned byteAt(std::string_view record, std::size_t at) {
    return static_cast<unsigned char>(record[at]);
}

}  // namespace

std::vector<unsigned> userSessions(std::string_view utmp) {
    std::vector<unsigned> sessions;
    const bool wide = utmp.size() % kRecord != 0 && utmp.size() % kWideRecord == 0;
    const std::size_t size = wide ? kWideRecord : kRecord;
    for (; utmp.size() >= size; utmp.remove_prefix(size)) {
        // The type is a 16-bit number below 256, so the zero byte shows the byte order.
        const bool little = byteAt(utmp, 0) == kUserProcess && byteAt(utmp, 1) == 0;
        const bool big = byteAt(utmp, 0) == 0 && byteAt(utmp, 1) == kUserProcess;
        if (!little && !big) continue;
        const std::uint64_t process = little ? littleEndian(utmp, 4, 4) : bigEndian(utmp, 4, 4);
        sessions.push_back(static_cast<unsigned>(process));
    }
    return sessions;
}

std::optional<std::size_t> countUsers(const Root& root) {
    std::optional<std::string> utmp = root.read("/run/utmp");
    if (!utmp) utmp = root.read("/var/run/utmp");
    if (!utmp) return std::nullopt;
    const std::vector<unsigned> sessions = userSessions(*utmp);
    if (!root.live()) return sessions.size();
    // The record of a killed session is not removed.
    return static_cast<std::size_t>(std::ranges::count_if(
        sessions, [&root](unsigned process) { return root.exists("/proc/" + std::to_string(process)); }));
}

}  // namespace toolkit::quorvah
