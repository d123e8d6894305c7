#include <unistd.h>

#include "toolkit/machine/IsoTime.h"
#include "toolkit/quorvah/GroupTable.h"
#include "toolkit/quorvah/NameDatabase.h"
#include "toolkit/quorvah/Report.h"
#include "toolkit/quorvah/Scan.h"

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
    {"Complete"},
    {"Warnings"},
    {"NameDatabaseVersion"},
};

void gather(Scan& scan, Report& report) {
    const Summary& summary = scan.summary;
    Instance& info = report.add("quorvah");
    info.set("ScannerVersion", QUORVAH_VERSION);
    info.set("SchemaVersion", "1");
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
    info.set("Complete", summary.partial.empty());
    info.set("Warnings", summary.warnings);
    info.set("NameDatabaseVersion", nameDatabaseVersions(scan.options()));
}

}  // namespace

const Group kScanInfo{"Scan Info", "ScanInfo", kFields, gather};

}  // namespace toolkit::quorvah
