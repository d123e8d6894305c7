#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "schema/Catalogue.h"
#include "schema/groups/ScanInfo.h"
#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/GroupData.h"
#include "toolkit/quorvah/sources/GatheringContext.h"

namespace toolkit::quorvah {

namespace {

// Both lists include groups that were not requested, so that a reader learns which groups this scanner never gathers.
std::vector<std::string> unsupported() {
    std::vector<std::string> names;
    for (const Group* const group : allGroups()) {
        if (group->gather == nullptr && group->otherPlatform == nullptr) names.emplace_back(group->xmlName);
    }
    return names;
}

std::vector<std::string> notApplicable(const ScanSummary& summary) {
    std::vector<std::string> entries;
    for (const Group* const group : allGroups()) {
        if (group->otherPlatform != nullptr)
            entries.push_back(std::string(group->xmlName) + "=" + group->otherPlatform);
    }
    for (const std::string& entry : summary.notApplicable) {
        if (std::ranges::find(entries, entry) == entries.end()) entries.push_back(entry);
    }
    return entries;
}

// The versions of the existing databases of device names.
std::vector<std::string> nameDatabases(const GatheringContext& context) {
    std::vector<std::string> versions;
    for (const DeviceNameDatabase* const names : {&context.pciNames(), &context.usbNames()}) {
        const std::string version = names->version();
        if (!version.empty()) versions.push_back(version);
    }
    return versions;
}

void gather(GatheringContext& context, GroupData& data) {
    const ScanSummary& summary = context.summary;
    Instance& info = data.add("quorvah");
    info.set("ScannerVersion", QUORVAH_VERSION);
    info.set("SchemaVersion", schema::kVersion);
    info.set("StartTime", isoTime(summary.startTime));
    info.set("EndTime", isoTime(summary.endTime));
    info.set("ElapsedTime", summary.elapsed);
    info.set("EffectiveUserId", ::geteuid());
    info.set("Privileged", ::geteuid() == 0);
    info.set("RootPath", context.root().directory());
    info.set("Platform", "linux-" QUORVAH_MACHINE);
    info.set("GroupsRequested", summary.requested);
    info.set("GroupsComplete", summary.complete);
    info.set("GroupsPartial", summary.partial);
    info.set("GroupsUnread", summary.unread);
    info.set("GroupsNotApplicable", notApplicable(summary));
    info.set("GroupsUnsupported", unsupported());
    info.set("Complete", summary.partial.empty() && summary.unread.empty() && summary.unsupported.empty());
    info.set("Warnings", summary.warnings);
    info.set("NameDatabaseVersion", nameDatabases(context));
}

}  // namespace

constexpr Group kScanInfo{
    .displayName = "Scan Info", .xmlName = "ScanInfo", .fields = schema::kScanInfo.fields, .gather = gather};

}  // namespace toolkit::quorvah
