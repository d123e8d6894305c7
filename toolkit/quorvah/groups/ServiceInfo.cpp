#include <algorithm>
#include <set>
#include <string>

#include "schema/groups/ServiceInfo.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/InitScripts.h"
#include "toolkit/quorvah/sources/ServiceUnits.h"

namespace toolkit::quorvah {

namespace {

std::string_view startMode(const ServiceUnit& unit) {
    if (unit.masked) return "Masked";
    if (unit.enabled) return "Automatic";
    return unit.installable ? "Disabled" : "Manual";
}

// The process of the group that the service manager itself has started, if there is only one.
Count mainProcess(const Root& root, std::string_view processes) {
    Count found;
    for (std::string_view line; nextLine(processes, line);) {
        const std::string stat = root.readLine("/proc/" + std::string(line) + "/stat");
        // "417 (name) S 1 ...": the name may contain blanks and parentheses.
        std::string_view rest = stat;
        rest.remove_prefix(std::min(stat.rfind(')') + 1, stat.size()));
        nextWord(rest);
        if (nextWord(rest) != "1") continue;
        if (found) return std::nullopt;
        found = readCount(line);
    }
    return found;
}

// The service manager makes a link for each service that is active, and a control group for its processes.
class RunningServices {
  public:
    explicit RunningServices(const Root& root) : root_(root) {
        if (!root.live() || !root.isDirectory("/run/systemd/system")) return;
        known_ = root.isDirectory("/run/systemd/units");
        constexpr std::string_view kPrefix = "invocation:";
        for (const std::string& name : root.list("/run/systemd/units")) {
            if (name.starts_with(kPrefix)) active_.insert(name.substr(kPrefix.size()));
        }
    }

    void set(const std::string& name, Instance& service) const {
        if (!known_ || name.find("@.") != std::string::npos) return;
        const bool active = active_.contains(name);
        service.set("Started", active);
        service.set("Status", active ? "Active" : "Inactive");
        if (!active) return;
        const std::string processes = processesOf(name);
        service.set("SubState", processes.empty() ? "Exited" : "Running");
        service.set("ProcessId", mainProcess(root_, processes));
    }

  private:
    // Instances of a template are in a slice of their own, in whose name a dash is escaped.
    std::string processesOf(const std::string& name) const {
        std::string place = name + "/cgroup.procs";
        const std::size_t at = name.find('@');
        if (at != std::string::npos) {
            std::string slice = "system-";
            for (const char c : name.substr(0, at)) slice += c == '-' ? "\\x2d" : std::string(1, c);
            place.insert(0, slice + ".slice/");
        }
        for (std::string path : {"/sys/fs/cgroup/system.slice/", "/sys/fs/cgroup/systemd/system.slice/"}) {
            std::string processes = root_.read(path.append(place)).value_or("");
            if (!processes.empty()) return processes;
        }
        return {};
    }

    const Root& root_;
    bool known_ = false;
    std::set<std::string> active_;
};

void addUnits(const Root& root, GroupData& data, std::set<std::string>& names) {
    const RunningServices running(root);
    for (const ServiceUnit& unit : readServiceUnits(root)) {
        names.insert(unit.name);
        Instance& service = data.add(unit.name);
        service.set("Caption", unit.description);
        service.set("StartMode", startMode(unit));
        running.set(unit.name, service);
        service.set("PathName", unit.program);
        service.set("StartName", unit.user.empty() && !unit.program.empty() ? "root" : unit.user);
        service.set("UnitFile", unit.file);
        service.set("InitSystem", "systemd");
    }
}

// A unit hides the script of the same name.
void addScripts(const Root& root, GroupData& data, const std::set<std::string>& units) {
    for (const InitScript& script : readInitScripts(root)) {
        if (units.contains(script.name + ".service")) continue;
        Instance& service = data.add(script.name);
        service.set("Caption", script.description);
        service.set("StartMode", script.enabled ? "Automatic" : "Disabled");
        if (script.openRc && root.live() && root.isDirectory("/run/openrc/started")) {
            const bool started = root.exists("/run/openrc/started/" + script.name);
            service.set("Started", started);
            service.set("Status", started ? "Active" : "Inactive");
        }
        service.set("PathName", script.path);
        service.set("StartName", "root");
        service.set("UnitFile", script.path);
        service.set("InitSystem", script.openRc ? "openrc" : "sysv");
    }
}

constexpr const char* kSources[] = {"/etc/systemd", "/usr/lib/systemd", "/lib/systemd", "/etc/init.d",
                                    "/etc/inittab"};

void gather(GatheringContext& context, GroupData& data) {
    std::set<std::string> units;
    addUnits(context.root(), data, units);
    addScripts(context.root(), data, units);
}

}  // namespace

constexpr Group kServiceInfo{.displayName = "Service Info",
                             .xmlName = "ServiceInfo",
                             .fields = schema::kServiceInfo.fields,
                             .gather = gather,
                             .sources = kSources};

}  // namespace toolkit::quorvah
