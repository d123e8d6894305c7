#include "toolkit/machine/Packages.h"
#include "toolkit/machine/RpmHeader.h"
#include "toolkit/machine/SqliteFile.h"

namespace toolkit {
namespace {

using Damage = PackageDatabase::Damage;

// The record that the header is a part of is gone after the visit.
InstalledPackage packageOf(const RpmPackage& rpm, std::string_view database, PackageTexts& texts) {
    const std::string epoch = rpm.hasEpoch ? std::to_string(rpm.epoch) : std::string();
    InstalledPackage package;
    package.type = PackageType::Rpm;
    package.name = texts.keep(rpm.name);
    package.version = texts.keep({epoch, epoch.empty() ? "" : ":", rpm.version, "-", rpm.release});
    package.epoch = package.version.substr(0, epoch.size());
    package.upstream = package.version.substr(epoch.empty() ? 0 : epoch.size() + 1, rpm.version.size());
    package.release = package.version.substr(package.version.size() - rpm.release.size());
    package.architecture = texts.keep(rpm.architecture);
    package.source = texts.keep(nameOfSourceRpm(rpm.sourceRpm));
    package.maintainer = texts.keep(rpm.vendor);
    package.description = texts.keep(rpm.summary);
    package.section = texts.keep(rpm.group);
    if (rpm.size != 0) package.bytes = rpm.size;
    if (rpm.installTime != 0) package.installed = static_cast<std::int64_t>(rpm.installTime);
    package.database = database;
    return package;
}

// The database holds the keys that signatures are checked with as packages, too; they are no software.
bool isKey(const RpmPackage& package) {
    return package.name == "gpg-pubkey";
}

bool visitSqlite(std::string_view file, std::string_view database, PackageTexts& texts,
                 const PackageVisitor& visit) {
    bool headersWhole = true;
    const bool tableWhole = readSqliteTable(file, "Packages", [&](std::string_view record) {
        RpmPackage package;
        if (!readRpmHeader(sqliteColumn(record, 1).bytes, package)) {
            headersWhole = false;
        } else if (!isKey(package)) {
            visit(packageOf(package, database, texts));
        }
    });
    return tableWhole && headersWhole;
}

PackageDatabase readFile(const Root& root, const std::string& path, PackageTexts& texts,
                         const PackageVisitor& visit) {
    if (!visitSqlite(FileText(root, path).text(), texts.keep(path), texts, visit))
        return {Damage::Broken, path};
    // Changes that rpm has not yet carried over into the database.
    const std::string log = path + "-wal";
    if (!FileText(root, log).text().empty()) return {Damage::Unsaved, log};
    return {};
}

}  // namespace

PackageDatabase visitRpmPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                 const PackageVisitor& visit) {
    if (!database.empty()) {
        return root.exists(database) ? readFile(root, database, texts, visit) : PackageDatabase();
    }
    for (const std::string folder : {"/usr/lib/sysimage/rpm", "/var/lib/rpm"}) {
        const std::string path = folder + "/rpmdb.sqlite";
        if (root.exists(path)) return readFile(root, path, texts, visit);
        // The kinds of databases that rpm had before.
        for (const char* const old : {"/Packages", "/Packages.db"}) {
            if (root.exists(folder + old)) return {Damage::Unsupported, folder + old};
        }
    }
    return {};
}

}  // namespace toolkit
