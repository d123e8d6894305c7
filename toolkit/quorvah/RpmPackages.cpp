#include "toolkit/machine/FileText.h"
#include "toolkit/machine/IsoTime.h"
#include "toolkit/machine/PackageUrl.h"
#include "toolkit/machine/RpmHeader.h"
#include "toolkit/machine/SqliteFile.h"
#include "toolkit/quorvah/PackageSources.h"

namespace toolkit::quorvah {
namespace {

void addPackage(const RpmPackage& package, std::string_view distribution, Report& report) {
    const std::string epoch = package.hasEpoch ? std::to_string(package.epoch) : std::string();
    const std::string version = std::string(package.version) + "-" + std::string(package.release);
    Instance& instance = report.add(packageUrl("rpm", distribution, package.name, version,
                                               {{"arch", package.architecture}, {"epoch", epoch}}));
    instance.set("Name", package.name);
    instance.set("VersionString", epoch.empty() ? version : epoch + ":" + version);
    instance.set("Manufacturer", package.vendor);
    instance.set("Description", package.summary);
    if (package.installTime != 0) {
        instance.set("InstallDate", isoTime(static_cast<std::int64_t>(package.installTime)));
    }
    instance.set("Architecture", package.architecture);
    instance.set("Epoch", epoch);
    instance.set("Release", package.release);
    instance.set("Source", nameOfSourceRpm(package.sourceRpm));
    instance.set("Section", package.group);
    if (package.size != 0) instance.set("InstalledSize", kibOf(package.size));
    instance.set("PackageFormat", "rpm");
}

// The database holds the keys that signatures are checked with as packages, too; they are no software.
bool isKey(const RpmPackage& package) {
    return package.name == "gpg-pubkey";
}

void addFromSqlite(std::string_view file, std::string_view distribution, Report& report) {
    bool headersWhole = true;
    const bool tableWhole = readSqliteTable(file, "Packages", [&](std::string_view record) {
        RpmPackage package;
        if (!readRpmHeader(sqliteColumn(record, 1).bytes, package)) {
            headersWhole = false;
        } else if (!isKey(package)) {
            addPackage(package, distribution, report);
        }
    });
    if (!tableWhole || !headersWhole) report.partial("rpm-broken");
}

// The kinds of databases that rpm had before.
bool hasOldDatabase(const Root& root, const std::string& folder) {
    return root.exists(folder + "/Packages") || root.exists(folder + "/Packages.db");
}

}  // namespace

void addRpmPackages(const Root& root, std::string_view distribution, Report& report) {
    for (const std::string folder : {"/usr/lib/sysimage/rpm", "/var/lib/rpm"}) {
        const std::string path = folder + "/rpmdb.sqlite";
        if (root.exists(path)) {
            addFromSqlite(FileText(root, path).text(), distribution, report);
            // Changes that rpm has not yet carried over into the database stand in a log beside it.
            if (!FileText(root, path + "-wal").text().empty()) report.partial("rpm-unsaved");
            return;
        }
        if (hasOldDatabase(root, folder)) {
            report.partial("rpm-unsupported");
            return;
        }
    }
}

}  // namespace toolkit::quorvah
