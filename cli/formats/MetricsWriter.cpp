#include "cli/formats/MetricsWriter.h"

#include <fmt/format.h>

#include <charconv>
#include <initializer_list>
#include <iterator>
#include <map>

#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

constexpr unsigned long long kBytesPerKiB = 1024;

struct Label {
    std::string_view name;
    std::string value;
};

// A label value in quotes. The format requires UTF-8.
std::string quoted(const std::string& value) {
    std::string text = "\"";
    for (const char byte : toUtf8(fromUtf8(value))) {
        if (byte == '\n') {
            text += "\\n";
            continue;
        }
        if (byte == '"' || byte == '\\') text += '\\';
        text += byte;
    }
    return text + '"';
}

class Writer {
  public:
    explicit Writer(const HardwareInventory& inventory) : inventory_(inventory) {}

    std::string write() {
        machine();
        system();
        processors();
        memory();
        packages();
        completeness();
        scan();
        return std::move(text_);
    }

  private:
    const std::vector<Instance>& instancesOf(std::string_view name) const {
        return zavcli::instancesOf(inventory_, name);
    }
    std::string valueOf(std::string_view group, std::string_view field) const {
        const std::vector<Instance>& instances = instancesOf(group);
        return instances.empty() ? "" : zavcli::valueOf(instances.front(), field);
    }

    void begin(std::string_view name, std::string_view help) {
        fmt::format_to(std::back_inserter(text_), "# HELP {0} {1}\n# TYPE {0} gauge\n", name, help);
    }
    void sample(std::string_view name, const std::vector<Label>& labels, std::string_view value) {
        text_ += name;
        char separator = '{';
        for (const Label& label : labels) {
            fmt::format_to(std::back_inserter(text_), "{}{}={}", separator, label.name, quoted(label.value));
            separator = ',';
        }
        fmt::format_to(std::back_inserter(text_), "{} {}\n", labels.empty() ? "" : "}", value);
    }
    void metric(std::string_view name, std::string_view help, const std::vector<Label>& labels,
                const std::string& value) {
        begin(name, help);
        sample(name, labels, value);
    }

    void machine() {
        if (instancesOf("ComponentID").empty()) return;
        metric("zav_machine_info", "The machine: its name, its maker, its model and what it runs in.",
               {{"host", valueOf("ComponentID", "Name")},
                {"manufacturer", valueOf("ComponentID", "Manufacturer")},
                {"product", valueOf("ComponentID", "ProductName")},
                {"virtualization", valueOf("VirtualMachineGuest", "VirtualSystemType")}},
               "1");
    }

    void system() {
        if (instancesOf("OperatingSystem").empty()) return;
        metric("zav_os_info", "The operating system.",
               {{"id", valueOf("OperatingSystem", "Id")},
                {"version_id", valueOf("OperatingSystem", "VersionId")},
                {"name", valueOf("OperatingSystem", "Caption")},
                {"kernel", valueOf("OperatingSystem", "Version")},
                {"architecture", valueOf("OperatingSystem", "Architecture")}},
               "1");
    }

    void processors() {
        std::map<std::string, int> counts;
        for (const Instance& processor : instancesOf("Processor"))
            ++counts[zavcli::valueOf(processor, "EnabledState") == "Disabled" ? "offline" : "online"];
        if (counts.empty()) return;
        begin("zav_processors", "Number of logical processors.");
        for (const auto& [state, count] : counts)
            sample("zav_processors", {{"state", state}}, std::to_string(count));
    }

    void memory() {
        bytes("zav_memory_visible_bytes", "Memory that is available to the system.",
              valueOf("Memory", "TotalVisibleMemorySize"));
        bytes("zav_memory_installed_bytes", "Memory of the installed modules.",
              valueOf("Memory", "InstalledMemory"));
    }
    void bytes(std::string_view name, std::string_view help, const std::string& kibibytes) {
        unsigned long long size = 0;
        const char* const end = kibibytes.data() + kibibytes.size();
        const auto [stop, error] = std::from_chars(kibibytes.data(), end, size);
        if (kibibytes.empty() || error != std::errc() || stop != end) return;
        // As the scraper reads it, a number is a double, which is exact enough for the sizes of memories.
        metric(name, help, {}, fmt::format("{}", size * kBytesPerKiB));
    }

    void packages() {
        std::map<std::string, int> counts;
        for (const Instance& package : instancesOf("SoftwarePackages"))
            ++counts[zavcli::valueOf(package, "PackageFormat")];
        if (counts.empty()) return;
        begin("zav_packages", "Number of installed packages by package manager.");
        for (const auto& [format, count] : counts)
            sample("zav_packages", {{"format", format}}, std::to_string(count));
    }

    void completeness() {
        if (inventory_.groups.empty()) return;
        begin("zav_group_complete", "Whether everything of a group of the inventory was read.");
        for (const Group& group : inventory_.groups) {
            const GroupState state = group.status.state;
            if (state == GroupState::NotApplicable || state == GroupState::Unknown) continue;
            sample("zav_group_complete", {{"group", group.name}, {"reason", group.status.reason}},
                   state == GroupState::Complete ? "1" : "0");
        }
    }

    void scan() {
        metric("zav_scan_start_time_seconds", "Start of the scan since the epoch.", {},
               std::to_string(inventory_.scan.seconds));
        metric("zav_scan_duration_seconds", "Duration of the scan.", {},
               fmt::format("{}.{:03}", inventory_.scan.milliseconds / 1000,
                           inventory_.scan.milliseconds % 1000));
    }

    const HardwareInventory& inventory_;
    std::string text_;
};

}  // namespace

std::vector<std::string> metricGroups() {
    return {"ComponentID", "OperatingSystem",  "Processor",
            "Memory",      "SoftwarePackages", "VirtualMachineGuest"};
}

std::string metricsText(const HardwareInventory& inventory) {
    return Writer(inventory).write();
}

}  // namespace zavcli
