#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "toolkit/machine/text/IsoTime.h"
#include "toolkit/quorvah/groups/GroupTable.h"
#include "toolkit/quorvah/report/Report.h"
#include "toolkit/quorvah/sources/NameDatabase.h"
#include "toolkit/quorvah/sources/Scan.h"

namespace toolkit::quorvah {

namespace {

constexpr FieldDef kFields[] = {
    {"ScannerName"},
    {"ScannerVersion"},
    {"SchemaVersion"},
    {"StartTime", FieldDef::kVolatile},
    {"EndTime", FieldDef::kVolatile},
    {"ElapsedTime", FieldDef::kVolatile},
    {"EffectiveUserId"},
    {"Privileged"},
    {"RootPath", FieldDef::kPrivate},
    {"Platform"},
    {"GroupsRequested"},
    {"GroupsComplete"},
    {"GroupsPartial"},
    {"GroupsUnread"},
    {"GroupsNotApplicable"},
    {"GroupsUnsupported"},
    {"Complete"},
    {"Warnings"},
    {"NameDatabaseVersion"},
};

// Both lists tell of all groups that this scanner never gathers, also of those that were not asked for: so a reader learns of
// them without asking for all.
std::vector<std::string> unsupported() {
    std::vector<std::string> names;
    for (const Group* const group : allGroups()) {
        if (group->gather == nullptr && group->elsewhere == nullptr) names.emplace_back(group->xmlName);
    }
    return names;
}

std::vector<std::string> notApplicable(const Summary& summary) {
    std::vector<std::string> entries;
    for (const Group* const group : allGroups()) {
        if (group->elsewhere != nullptr)
            entries.push_back(std::string(group->xmlName) + "=" + group->elsewhere);
    }
    for (const std::string& entry : summary.notApplicable) {
        if (std::ranges::find(entries, entry) == entries.end()) entries.push_back(entry);
    }
    return entries;
}

void gather(Scan& scan, Report& report) {
    const Summary& summary = scan.summary;
    Instance& info = report.add("quorvah");
    info.set("ScannerVersion", QUORVAH_VERSION);
    info.set("SchemaVersion", "2");
    info.set("StartTime", isoTime(summary.startTime));
    info.set("EndTime", isoTime(summary.endTime));
    info.set("ElapsedTime", summary.elapsed);
    info.set("EffectiveUserId", ::geteuid());
    info.set("Privileged", ::geteuid() == 0);
    info.set("RootPath", scan.root().directory());
    info.set("Platform", "linux-" QUORVAH_MACHINE);
    info.set("GroupsRequested", summary.requested);
    info.set("GroupsComplete", summary.complete);
    info.set("GroupsPartial", summary.partial);
    info.set("GroupsUnread", summary.unread);
    info.set("GroupsNotApplicable", notApplicable(summary));
    info.set("GroupsUnsupported", unsupported());
    info.set("Complete", summary.partial.empty() && summary.unread.empty() && summary.unsupported.empty());
    info.set("Warnings", summary.warnings);
    info.set("NameDatabaseVersion", nameDatabaseVersions(scan.options()));
}

}  // namespace

const Group kScanInfo{"Scan Info", "ScanInfo", kFields, gather};

}  // namespace toolkit::quorvah
