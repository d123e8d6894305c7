#include <algorithm>
#include <string>

#include "schema/groups/InstalledPatches.h"
#include "toolkit/machine/packages/PackageUrl.h"
#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/machine/text/ShellVariables.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"
#include "toolkit/quorvah/sources/KernelInfo.h"
#include "toolkit/quorvah/sources/PackageLogs.h"

namespace toolkit::quorvah {

namespace {

constexpr std::int64_t kPeriod = std::int64_t{180} * 86400;
const std::string kLivePatches = "/sys/kernel/livepatch/";

void addLivePatches(const Root& root, GroupData& data) {
    for (const std::string& name : root.list(kLivePatches)) {
        const std::string enabled = root.readLine(kLivePatches + name + "/enabled");
        Instance& patch = data.add("livepatch:" + name);
        patch.set("Name", name);
        patch.set("VersionString", root.readLine("/sys/module/" + name + "/version"));
        patch.set("PatchType", "livepatch");
        if (enabled == "0" || enabled == "1") patch.set("Enabled", enabled == "1");
    }
}

// The identifier of the distribution, which a package URL contains.
std::string distribution(const Root& root) {
    std::optional<std::string> file = root.read("/etc/os-release");
    if (!file) file = root.read("/usr/lib/os-release");
    return ShellVariables(file.value_or("")).value("ID");
}

void addUpgrade(const Upgrade& upgrade, const char* type, const std::string& distribution, GroupData& data) {
    Instance& patch = data.add(
        packageUrl(type, distribution, upgrade.name, upgrade.version, {{"arch", upgrade.architecture}}));
    patch.set("Name", upgrade.name);
    patch.set("VersionString", upgrade.version);
    const std::string time = isoTime(upgrade.time);
    patch.set("InstallDate", upgrade.hasZone ? time : time.substr(0, 10));
    patch.set("PreviousVersion", upgrade.previous);
    patch.set("PatchType", "package-update");
}

// The time up to which the logs of a tree may reach, whose files do not tell when it was captured.
std::int64_t latest(const UpgradeLogs& logs) {
    std::int64_t time = 0;
    for (const Upgrade& upgrade : logs.dpkg) time = std::max(time, upgrade.time);
    for (const Upgrade& upgrade : logs.pacman) time = std::max(time, upgrade.time);
    return time;
}

constexpr const char* kSources[] = {"/var/log", "/sys/kernel"};

void gather(GatheringContext& context, GroupData& data) {
    const Root& root = context.root();
    addLivePatches(root, data);
    const std::optional<std::int64_t> now = observationTime(root);
    const UpgradeLogs logs = readUpgrades(root, now ? *now - kPeriod : 0);
    const std::int64_t since = now ? *now - kPeriod : latest(logs) - kPeriod;
    const std::string id = distribution(root);
    for (const Upgrade& upgrade : logs.dpkg) {
        if (upgrade.time >= since) addUpgrade(upgrade, "deb", id, data);
    }
    for (const Upgrade& upgrade : logs.pacman) {
        if (upgrade.time >= since) addUpgrade(upgrade, "alpm", id, data);
    }
    if (!logs.complete) data.partial("logs-broken");
}

}  // namespace

constexpr Group kInstalledPatches{.displayName = "Installed Patches",
                                  .xmlName = "InstalledPatches",
                                  .fields = schema::kInstalledPatches.fields,
                                  .gather = gather,
                                  .sources = kSources};

}  // namespace toolkit::quorvah
