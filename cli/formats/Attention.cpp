// What of a machine needs attention.
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <optional>
#include <set>
#include <string_view>

#include "cli/formats/SummaryWriter.h"
#include "schema/Catalogue.h"
#include "schema/Quantity.h"

namespace zavcli {

namespace {

constexpr unsigned long long kPercent = 100;
constexpr unsigned long long kLeastFreePercent = 10;
constexpr unsigned long long kLeastVisiblePercent = 75;

std::optional<unsigned long long> numberOf(const Instance& instance, std::string_view field) {
    const std::string text = valueOf(instance, field);
    unsigned long long number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (text.empty() || error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::string readable(const Instance& instance, std::string_view group, std::string_view name) {
    return schema::readableValue(*schema::findField(*schema::findGroup(group), name),
                                 valueOf(instance, name));
}

bool isShort(unsigned long long free, unsigned long long total, unsigned long long percent) {
    return total > 0 && free < total / kPercent * percent;
}

// Images are always full.
bool isImage(const Instance& drive) {
    constexpr std::array<std::string_view, 4> kImages{"squashfs", "iso9660", "udf", "erofs"};
    return valueOf(drive, "ReadOnly") == "true" ||
           std::ranges::find(kImages, valueOf(drive, "FileSystemType")) != kImages.end();
}

void addFullFileSystems(std::vector<std::string>& lines, const HardwareInventory& inventory) {
    for (const Instance& drive : instancesOf(inventory, "LogicalDrive")) {
        if (isImage(drive)) continue;
        const auto size = numberOf(drive, "FileSystemSize");
        const auto free = numberOf(drive, "AvailableSpace");
        if (size && free && isShort(*free, *size, kLeastFreePercent))
            lines.push_back(fmt::format("{} is nearly full: {} of {} are free", valueOf(drive, "Root"),
                                        readable(drive, "LogicalDrive", "AvailableSpace"),
                                        readable(drive, "LogicalDrive", "FileSystemSize")));
        const auto inodes = numberOf(drive, "InodesTotal");
        const auto freeInodes = numberOf(drive, "InodesFree");
        if (inodes && freeInodes && isShort(*freeInodes, *inodes, kLeastFreePercent))
            lines.push_back(fmt::format("{} has nearly no room for files: {} of {} inodes are free",
                                        valueOf(drive, "Root"), *freeInodes, *inodes));
    }
}

void addOfflineProcessors(std::vector<std::string>& lines, const HardwareInventory& inventory) {
    std::vector<std::string> names;
    for (const Instance& processor : instancesOf(inventory, "Processor")) {
        if (valueOf(processor, "EnabledState") == "Disabled") names.push_back(valueOf(processor, "DeviceID"));
    }
    constexpr std::size_t kMaxNamed = 8;
    if (names.size() > kMaxNamed)
        lines.push_back(fmt::format("{} processors are offline", names.size()));
    else if (!names.empty())
        lines.push_back(fmt::format("offline: {}", fmt::join(names, ", ")));
}

// The different readable values of a field, if there are several.
std::vector<std::string> mixedValues(const std::vector<Instance>& modules, std::string_view field) {
    std::set<std::string> values;
    for (const Instance& module : modules) {
        if (numberOf(module, "Capacity").value_or(1) != 0 && !valueOf(module, field).empty())
            values.insert(readable(module, "MemoryModules", field));
    }
    if (values.size() < 2) return {};
    return {values.begin(), values.end()};
}

void addMemory(std::vector<std::string>& lines, const HardwareInventory& inventory) {
    const std::vector<Instance>& modules = instancesOf(inventory, "MemoryModules");
    for (const auto& [field, word] :
         {std::pair("Capacity", "sizes"), std::pair("MemoryType", "types"), std::pair("Speed", "speeds")}) {
        const std::vector<std::string> values = mixedValues(modules, field);
        if (!values.empty())
            lines.push_back(fmt::format("memory modules of different {}: {}", word, fmt::join(values, ", ")));
    }
    for (const Instance& memory : instancesOf(inventory, "Memory")) {
        const auto installed = numberOf(memory, "InstalledMemory");
        const auto visible = numberOf(memory, "TotalVisibleMemorySize");
        if (installed && visible && isShort(*visible, *installed, kLeastVisiblePercent))
            lines.push_back(
                fmt::format("{} of memory are installed, but the system sees {}: a module may have failed",
                            readable(memory, "Memory", "InstalledMemory"),
                            readable(memory, "Memory", "TotalVisibleMemorySize")));
    }
}

void addIncompleteGroups(std::vector<std::string>& lines, const HardwareInventory& inventory) {
    for (const auto& [state, lead] :
         {std::pair(GroupState::Unread, "could not be read"), std::pair(GroupState::Partial, "incomplete")}) {
        std::map<std::string, std::vector<std::string>> names;
        for (const Group& group : inventory.groups) {
            if (group.status.state == state) names[group.status.reason].push_back(group.name);
        }
        for (const auto& [reason, groups] : names)
            lines.push_back(fmt::format("{}: {} ({})", lead, fmt::join(groups, ", "), reasonText(reason)));
    }
}

}  // namespace

std::vector<std::string> attentionLines(const HardwareInventory& inventory) {
    std::vector<std::string> lines;
    addFullFileSystems(lines, inventory);
    addOfflineProcessors(lines, inventory);
    addMemory(lines, inventory);
    addIncompleteGroups(lines, inventory);
    return lines;
}

}  // namespace zavcli
