#include "toolkit/quorvah/sources/FirmwareMemory.h"

#include <algorithm>
#include <string>
#include <vector>

namespace toolkit::quorvah {

namespace {

// Addresses; `last` is the last one.
struct Range {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    bool memory = false;
};

Count address(const Root& root, const std::string& path) {
    const std::string line = root.readLine(path);
    return line.starts_with("0x") ? readCount(std::string_view(line).substr(2), 16) : std::nullopt;
}

std::vector<Range> readMap(const Root& root) {
    const std::string directory = "/sys/firmware/memmap/";
    std::vector<Range> map;
    for (const std::string& name : root.list(directory)) {
        const Count first = address(root, directory + name + "/start");
        const Count last = address(root, directory + name + "/end");
        if (first && last && *first <= *last)
            map.push_back({*first, *last, root.readLine(directory + name + "/type") == "System RAM"});
    }
    std::ranges::sort(map, {}, &Range::first);
    return map;
}

}  // namespace

Count firmwareMemory(const Root& root) {
    constexpr std::uint64_t kMib = std::uint64_t{1} << 20;
    constexpr std::uint64_t kFourGib = std::uint64_t{1} << 32;
    // PCs have no memory, but devices, from 640 KiB to 1 MiB.
    std::uint64_t low = 0;
    Count high = 0;
    for (const Range& range : readMap(root)) {
        if (range.first >= kFourGib) {
            if (range.memory) high = sum(high, range.last - range.first + 1);
        } else if (range.first <= std::max(low, kMib)) {
            low = std::max(low, range.last + 1);
        }
    }
    const Count all = sum(low, high);
    return low > kMib && all ? Count(*all / 1024) : std::nullopt;
}

}  // namespace toolkit::quorvah
