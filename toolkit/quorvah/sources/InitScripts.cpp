#include "toolkit/quorvah/sources/InitScripts.h"

#include <set>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvah {

namespace {

constexpr std::size_t kMaxScript = std::size_t{1} << 20;

// The names behind the order in "S20ssh", in the directories of the run levels in which a machine works.
std::set<std::string> enabledScripts(const Root& root) {
    std::set<std::string> names;
    for (const char* const directory : {"/etc/rcS.d", "/etc/rc2.d", "/etc/rc3.d", "/etc/rc4.d", "/etc/rc5.d",
                                        "/etc/rc.d/rc3.d", "/etc/rc.d/rc5.d"}) {
        for (const std::string& link : root.list(directory)) {
            if (link.size() > 3 && link.front() == 'S') names.insert(link.substr(3));
        }
    }
    for (const std::string& level : root.list("/etc/runlevels")) {
        for (std::string& name : root.list("/etc/runlevels/" + level)) names.insert(std::move(name));
    }
    return names;
}

}  // namespace

std::string scriptDescription(std::string_view script) {
    constexpr std::string_view kShort = "# Short-Description:";
    constexpr std::string_view kOpenRc = "description=";
    for (std::string_view line; nextLine(script, line);) {
        if (line.starts_with(kShort)) return std::string(trimmed(line.substr(kShort.size())));
        if (!line.starts_with(kOpenRc)) continue;
        line.remove_prefix(kOpenRc.size());
        if (line.empty() || (line.front() != '"' && line.front() != '\'')) return std::string(line);
        const char quote = line.front();
        line.remove_prefix(1);
        return std::string(takeField(line, quote));
    }
    return {};
}

std::vector<InitScript> readInitScripts(const Root& root) {
    const std::string directory = "/etc/init.d/";
    const std::set<std::string> enabled = enabledScripts(root);
    std::vector<InitScript> scripts;
    for (const std::string& name : root.list(directory)) {
        const std::string text = root.read(directory + name, kMaxScript).value_or("");
        InitScript script;
        script.openRc = text.starts_with("#!/sbin/openrc-run") || text.starts_with("#!/sbin/runscript");
        const bool isService = text.find("### BEGIN INIT INFO") != std::string::npos || script.openRc ||
                               text.find("# chkconfig:") != std::string::npos;
        if (!isService) continue;
        script.name = name;
        script.path = directory + name;
        script.description = scriptDescription(text);
        script.enabled = enabled.contains(name);
        scripts.push_back(std::move(script));
    }
    return scripts;
}

}  // namespace toolkit::quorvah
