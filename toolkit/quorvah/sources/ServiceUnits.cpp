#include "toolkit/quorvah/sources/ServiceUnits.h"

#include <map>
#include <set>
#include <utility>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::string_view kService = ".service";
constexpr std::size_t kMaxUnit = std::size_t{1} << 20;

// A unit in an earlier directory hides those in later ones.
constexpr const char* kDirectories[] = {
    "/etc/systemd/system.control/",  "/run/systemd/system.control/",   "/run/systemd/transient/",
    "/run/systemd/generator.early/", "/etc/systemd/system/",           "/run/systemd/system/",
    "/run/systemd/generator/",       "/usr/local/lib/systemd/system/", "/usr/lib/systemd/system/",
    "/lib/systemd/system/",          "/run/systemd/generator.late/",
};

// "getty@.service" for "getty@tty1.service"; empty for another name.
std::string templateOf(std::string_view name) {
    const std::size_t at = name.find('@');
    if (at == std::string_view::npos || at + 1 == name.size() - kService.size()) return {};
    return std::string(name.substr(0, at + 1)) + std::string(kService);
}

// The program of a command, without the characters in front of it that change how it is started.
std::string_view programOf(std::string_view command) {
    const std::size_t begin = command.find_first_not_of("@-:+!| \t");
    if (begin == std::string_view::npos) return {};
    command.remove_prefix(begin);
    if (command.starts_with('"')) {
        command.remove_prefix(1);
        return takeField(command, '"');
    }
    return nextWord(command);
}

class Units {
  public:
    explicit Units(const Root& root) : root_(root) {}

    std::vector<ServiceUnit> read() {
        for (const char* const directory : kDirectories) readDirectory(directory);
        addInstances();
        std::vector<ServiceUnit> units;
        for (auto& [name, unit] : units_) {
            if (aliases_.contains(name)) continue;
            complete(unit);
            units.push_back(std::move(unit));
        }
        return units;
    }

  private:
    void readDirectory(const std::string& directory) {
        for (const std::string& name : root_.list(directory)) {
            if (name.ends_with(".wants") || name.ends_with(".requires") || name.ends_with(".upholds")) {
                for (const std::string& wanted : root_.list(directory + name)) {
                    if (wanted.ends_with(kService)) wanted_.insert(wanted);
                }
            } else if (name.ends_with(".service.d")) {
                additions_[name.substr(0, name.size() - 2)].push_back(directory + name + "/");
            } else if (name.ends_with(kService) && name.size() > kService.size()) {
                addUnit(directory, name);
            }
        }
    }

    void addUnit(const std::string& directory, const std::string& name) {
        if (units_.contains(name) || aliases_.contains(name)) return;
        const std::string target = root_.linkName(directory + name);
        // A link to a unit of another name is another name of that unit.
        if (target.ends_with(kService) && target != name && templateOf(name) != target) {
            aliases_.insert(name);
            wantedByAlias(name, target);
            return;
        }
        ServiceUnit unit;
        unit.name = name;
        unit.file = directory + name;
        unit.masked = target == "null";
        units_.emplace(name, std::move(unit));
    }

    // The administrator enables a unit of "Alias=" by this link.
    void wantedByAlias(const std::string& alias, const std::string& target) {
        if (root_.exists("/etc/systemd/system/" + alias)) wanted_.insert(target);
    }

    // Enabled instances of templates have no file of their own.
    void addInstances() {
        for (const std::string& name : wanted_) {
            const auto found = units_.find(templateOf(name));
            if (units_.contains(name) || found == units_.end()) continue;
            ServiceUnit unit = found->second;
            unit.name = name;
            units_.emplace(name, std::move(unit));
        }
    }

    void complete(ServiceUnit& unit) {
        unit.enabled = wanted_.contains(unit.name);
        if (unit.masked) return;
        std::string text = root_.read(unit.file, kMaxUnit).value_or("");
        // An empty file masks a unit, too.
        unit.masked = trimmed(text).empty() && root_.exists(unit.file);
        for (const std::string& directory : additions_[unit.name]) {
            for (const std::string& name : root_.list(directory)) {
                if (name.ends_with(".conf"))
                    text += "\n" + root_.read(directory + name, kMaxUnit).value_or("");
            }
        }
        readServiceUnit(text, unit);
    }

    const Root& root_;
    std::map<std::string, ServiceUnit> units_;
    std::map<std::string, std::vector<std::string>> additions_;
    std::set<std::string> wanted_;
    std::set<std::string> aliases_;
};

}  // namespace

void readServiceUnit(std::string_view text, ServiceUnit& unit) {
    std::string_view section;
    for (std::string_view line; nextLine(text, line);) {
        line = trimmed(line);
        if (line.empty() || line.front() == '#' || line.front() == ';') continue;
        if (line.front() == '[') {
            section = line;
            continue;
        }
        std::string_view value = line;
        const std::string_view key = trimmed(takeField(value, '='));
        value = trimmed(value);
        if (section == "[Unit]" && key == "Description") unit.description = value;
        if (section == "[Service]" && key == "User") unit.user = value;
        if (section == "[Install]" && !value.empty()) unit.installable = true;
        if (section != "[Service]" || key != "ExecStart") continue;
        // An empty assignment removes earlier commands.
        if (value.empty()) {
            unit.program.clear();
        } else if (unit.program.empty()) {
            unit.program = programOf(value);
        }
    }
}

std::vector<ServiceUnit> readServiceUnits(const Root& root) {
    return Units(root).read();
}

}  // namespace toolkit::quorvah
