#include "toolkit/quorvah/sources/InstalledMemory.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/sources/FirmwareMemory.h"
#include "toolkit/quorvah/sources/KeyValueText.h"

namespace toolkit::quorvah {

namespace {

// The size of the memory blocks that are online. The file contains the size of a block in hexadecimal.
Count onlineBlocks(const Root& root) {
    const std::string directory = "/sys/devices/system/memory/";
    const Count size = readCount(root.readLine(directory + "block_size_bytes"), 16);
    if (!size) return std::nullopt;
    std::uint64_t count = 0;
    for (const std::string& name : root.list(directory)) {
        if (!name.starts_with("memory")) continue;
        const std::string state = root.readLine(directory + name + "/state");
        if (state == "online" || state == "going-offline") ++count;
    }
    return count > 0 ? product(*size / 1024, count) : std::nullopt;
}

// The sums of the lines "present N" and "managed N" of all zones, in pages.
struct Pages {
    Count present = 0;
    Count managed = 0;
};

Pages readZones(const Root& root) {
    const std::string zones = root.read("/proc/zoneinfo").value_or("");
    Pages pages;
    std::string_view rest = zones;
    for (std::string_view line; nextLine(rest, line);) {
        const std::string_view key = nextWord(line);
        if (key == "present") pages.present = sum(pages.present, readCount(nextWord(line)));
        if (key == "managed") pages.managed = sum(pages.managed, readCount(nextWord(line)));
    }
    return pages;
}

// The memory that the kernel manages is MemTotal, so that both together tell the size of a page, which no file does.
// A balloon makes both smaller, but not what is present.
Count presentMemory(const Root& root, Count total) {
    const Pages pages = readZones(root);
    if (!total || pages.managed.value_or(0) == 0 || pages.present.value_or(0) < *pages.managed) return total;
    constexpr std::uint64_t kPageSizes[] = {4, 8, 16, 64};  // KiB
    const std::uint64_t page = (*total + *pages.managed / 2) / *pages.managed;
    if (std::ranges::find(kPageSizes, page) == std::end(kPageSizes)) return total;
    return product(pages.present, page);
}

// The number from `least` to `most` that is a multiple of the greatest power of two.
std::uint64_t roundest(std::uint64_t least, std::uint64_t most) {
    std::uint64_t number = most;
    for (std::uint64_t unit = 1; unit <= most; unit *= 2) {
        const std::uint64_t rounded = most / unit * unit;
        if (rounded < least) break;
        number = rounded;
    }
    return number;
}

}  // namespace

MemoryOnline readMemoryOnline(const Root& root) {
    const std::string meminfo = root.read("/proc/meminfo").value_or("");
    return {presentMemory(root, kibOfKey(meminfo, "MemTotal")), onlineBlocks(root), firmwareMemory(root)};
}

Count installedMemory(const MemoryOnline& online, Count told) {
    const std::uint64_t least = online.least.value_or(0);
    if (told.value_or(0) > 0 && *told >= least) return told;
    constexpr std::uint64_t kMib = 1024;
    if (least > 0 && online.mapped.value_or(0) >= least && *online.mapped - least <= kMib)
        return online.mapped;
    if (!online.most) return told;
    return least == 0 || least > *online.most ? *online.most : roundest(least, *online.most);
}

}  // namespace toolkit::quorvah
