#include "toolkit/quorvah/sources/FirmwareMemory.h"

#include <algorithm>
#include <string>
#include <vector>

#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/quorvah/sources/DeviceTree.h"

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

// Boards that only virtual machines have. The firmware of other boards subtracts what it or the display uses.
bool isVirtualBoard(const Root& root) {
    const std::string board = deviceTreeText(root, "compatible");
    return board == "linux,dummy-virt" || board == "riscv-virtio" || board == "qemu,pseries";
}

// The sizes in the property "reg" of the nodes "memory@...": addresses and sizes of one or two 32-bit numbers.
Count memoryOfNodes(const Root& root) {
    const std::uint32_t addressCells = deviceTreeNumber(root, "#address-cells").value_or(2);
    const std::uint32_t sizeCells = deviceTreeNumber(root, "#size-cells").value_or(1);
    if (addressCells > 2 || sizeCells < 1 || sizeCells > 2) return std::nullopt;
    const std::size_t addressWidth = std::size_t{addressCells} * 4U;
    const std::size_t sizeWidth = std::size_t{sizeCells} * 4U;
    const std::string tree = deviceTree(root);
    Count bytes = 0;
    for (const std::string& name : root.list(tree)) {
        if (name != "memory" && !name.starts_with("memory@")) continue;
        const std::string ranges = root.read(tree + name + "/reg", 4096).value_or("");
        for (std::size_t at = 0; at + addressWidth + sizeWidth <= ranges.size();
             at += addressWidth + sizeWidth)
            bytes = sum(bytes, counted(bigEndian(ranges, at + addressWidth, sizeWidth)));
    }
    return bytes;
}

// The addresses from 0 without a gap, and the memory beyond 4 GiB.
Count memoryOfMap(const Root& root) {
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
    return low > kMib ? sum(low, high) : std::nullopt;
}

}  // namespace

Count firmwareMemory(const Root& root) {
    Count bytes = memoryOfMap(root);
    if (!bytes && isVirtualBoard(root)) bytes = memoryOfNodes(root);
    return bytes.value_or(0) > 0 ? Count(*bytes / 1024) : std::nullopt;
}

}  // namespace toolkit::quorvah
