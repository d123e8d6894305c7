#include "toolkit/quorvah/GroupTable.h"
#include "toolkit/quorvah/Report.h"
#include "toolkit/quorvah/Scan.h"

namespace quorvah {

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
    Instance& info = report.add("quorvah");
    info.set("RootPath", scan.root().directory());
    info.set("GroupsRequested", scan.summary.requested);
    info.set("GroupsComplete", scan.summary.complete);
    info.set("GroupsPartial", scan.summary.partial);
    info.set("Complete", scan.summary.partial.empty());
    info.set("Warnings", scan.summary.warnings);
}

}  // namespace

const Group kScanInfo{"Scan Info", "ScanInfo", kFields, gather};

}  // namespace quorvah
