#include "cli/formats/SummaryWriter.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <string_view>

#include "cli/formats/FieldLines.h"
#include "cli/terminal/PrintableText.h"
#include "schema/Catalogue.h"
#include "schema/Quantity.h"

namespace zavcli {

namespace {

constexpr std::string_view kIndent = "  ";
constexpr std::size_t kMaxListed = 4;
constexpr std::size_t kMaxAttention = 7;  // so that all fits on one screen

Instance firstOf(const HardwareInventory& inventory, std::string_view name) {
    const std::vector<Instance>& instances = instancesOf(inventory, name);
    return instances.empty() ? Instance() : instances.front();
}

// The value with the unit that people read.
std::string readable(const Instance& instance, std::string_view group, std::string_view name) {
    const schema::Field* const field = schema::findField(*schema::findGroup(group), name);
    return schema::readableValue(*field, valueOf(instance, name));
}

// The words that are known, with a separator between.
std::string joined(std::vector<std::string> words, std::string_view separator) {
    std::erase(words, "");
    return fmt::format("{}", fmt::join(words, separator));
}

// The first values, and how many are left.
std::string listed(std::vector<std::string> values) {
    const std::size_t count = values.size();
    if (count > kMaxListed) {
        values.resize(kMaxListed - 1);
        values.push_back(fmt::format("and {} more", count - values.size()));
    }
    return joined(std::move(values), ", ");
}

std::string counted(std::string_view count, std::string_view noun) {
    if (count.empty()) return "";
    return fmt::format("{} {}{}", count, noun, count == "1" ? "" : "s");
}

std::string machine(const HardwareInventory& inventory) {
    const Instance computer = firstOf(inventory, "ComponentID");
    const Instance guest = firstOf(inventory, "VirtualMachineGuest");
    const std::string kind = joined({valueOf(guest, "CloudPlatform"), valueOf(guest, "VirtualSystemType"),
                                     valueOf(guest, "ContainerType")},
                                    ", ");
    return joined({joined({valueOf(computer, "Manufacturer"), valueOf(computer, "ProductName")}, " "),
                   kind.empty() ? "" : fmt::format("virtual ({})", kind)},
                  ", ");
}

std::string system(const HardwareInventory& inventory) {
    const Instance system = firstOf(inventory, "OperatingSystem");
    const std::string kernel = valueOf(system, "Version");
    return joined({valueOf(system, "Caption"), kernel.empty() ? "" : "Linux " + kernel,
                   valueOf(system, "Architecture")},
                  ", ");
}

std::string processors(const HardwareInventory& inventory) {
    std::vector<std::string> packages;
    for (const Instance& package : instancesOf(inventory, "PhysicalProcessor")) {
        packages.push_back(
            joined({valueOf(package, "Name"), counted(valueOf(package, "NumberOfCores"), "core"),
                    counted(valueOf(package, "NumberOfLogicalProcessors"), "thread"),
                    readable(package, "PhysicalProcessor", "MaxClockSpeed")},
                   ", "));
    }
    if (packages.size() > 1 && std::equal(packages.begin() + 1, packages.end(), packages.begin()))
        return fmt::format("{} x {}", packages.size(), packages.front());
    return joined(packages, "; ");
}

std::string memory(const HardwareInventory& inventory) {
    const Instance memory = firstOf(inventory, "Memory");
    const std::string installed = readable(memory, "Memory", "InstalledMemory");
    const std::string available = readable(memory, "Memory", "MemAvailable");
    const std::size_t modules = instancesOf(inventory, "MemoryModules").size();
    return joined({installed.empty() ? readable(memory, "Memory", "TotalVisibleMemorySize") : installed,
                   modules == 0 ? "" : "in " + counted(std::to_string(modules), "module"),
                   available.empty() ? "" : available + " available"},
                  ", ");
}

std::string disks(const HardwareInventory& inventory) {
    std::vector<std::string> disks;
    for (const Instance& disk : instancesOf(inventory, "Storage")) {
        const std::string size = valueOf(disk, "Size");
        if (size.empty() || size == "0") continue;
        disks.push_back(joined({valueOf(disk, "Name"), readable(disk, "Storage", "Size"),
                                valueOf(disk, "MediaType"), valueOf(disk, "Model")},
                               " "));
    }
    return listed(std::move(disks));
}

std::string network(const HardwareInventory& inventory) {
    std::map<std::string, std::vector<std::string>> addresses;
    for (const Instance& address : instancesOf(inventory, "IPAddress"))
        addresses[valueOf(address, "Name")].push_back(valueOf(address, "IPv4Address"));
    for (const Instance& address : instancesOf(inventory, "IPv6Address")) {
        if (valueOf(address, "Scope") == "global")
            addresses[valueOf(address, "Name")].push_back(valueOf(address, "IPv6Address"));
    }
    std::vector<std::string> texts;
    for (const auto& [name, values] : addresses) {
        if (name != "lo") texts.push_back(fmt::format("{} {}", name, fmt::join(values, " ")));
    }
    return listed(std::move(texts));
}

std::string packages(const HardwareInventory& inventory) {
    std::map<std::string, int> counts;
    for (const Instance& package : instancesOf(inventory, "SoftwarePackages"))
        ++counts[valueOf(package, "PackageFormat")];
    std::vector<std::string> texts;
    texts.reserve(counts.size());
    for (const auto& [format, count] : counts) texts.push_back(fmt::format("{} {}", count, format));
    return joined(std::move(texts), ", ");
}

}  // namespace

std::vector<std::string> summaryGroups() {
    return {"ComponentID",         "OperatingSystem", "PhysicalProcessor", "Processor", "Memory",
            "MemoryModules",       "Storage",         "LogicalDrive",      "IPAddress", "IPv6Address",
            "VirtualMachineGuest", "SoftwarePackages"};
}

std::string summaryText(const HardwareInventory& inventory, const std::vector<std::string>& attention,
                        const TableStyle& style) {
    std::vector<Field> lines;
    const auto add = [&lines](const char* name, const std::string& value) {
        if (!value.empty()) lines.push_back({name, printable(value)});
    };
    add("Machine", machine(inventory));
    add("System", system(inventory));
    add("Processor", processors(inventory));
    add("Memory", memory(inventory));
    add("Disks", disks(inventory));
    add("Network", network(inventory));
    add("Packages", packages(inventory));
    const auto heading = [&style](const std::string& text, const char* colour) {
        return style.bold ? fmt::format("\x1b[{}m{}\x1b[0m\n", colour, text) : text + "\n";
    };
    constexpr const char* kBold = "1";
    constexpr const char* kBoldYellow = "1;33";
    constexpr std::size_t kLinesPerValue = 2;
    const std::string host = valueOf(firstOf(inventory, "ComponentID"), "Name");
    std::string text = heading(host.empty() ? "This machine" : printable(host), kBold);
    text += fieldLines(lines, kIndent, style.columns, kLinesPerValue).text;
    if (attention.empty()) return text + "\n" + heading("Nothing needs attention", kBold);
    text += "\n" + heading("Needs attention", kBoldYellow);
    for (std::size_t i = 0; i < std::min(attention.size(), kMaxAttention); ++i) {
        std::string_view lead = "- ";
        for (const std::string& line : wrap(printable(attention[i]), style.columns - 4)) {
            text += fmt::format("{}{}{}\n", kIndent, lead, line);
            lead = "  ";
        }
    }
    if (attention.size() > kMaxAttention)
        text += fmt::format("{}- and {} more\n", kIndent, attention.size() - kMaxAttention);
    return text;
}

}  // namespace zavcli
