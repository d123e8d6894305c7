#include "toolkit/machine/files/InputFile.h"
#include "toolkit/machine/packages/Packages.h"
#include "toolkit/machine/packages/RpmHeader.h"
#include "toolkit/machine/packages/SqliteFile.h"

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
    if (package.version.empty()) return package;  // more than may be kept
    package.epoch = package.version.substr(0, epoch.size());
    package.upstream = package.version.substr(epoch.empty() ? 0 : epoch.size() + 1, rpm.version.size());
    package.release = package.version.substr(package.version.size() - rpm.release.size());
    package.architecture = texts.keep(rpm.architecture);
    package.source = texts.keep(nameOfSourceRpm(rpm.sourceRpm));
    package.maintainer = texts.keep(rpm.vendor);
    package.description = texts.keep(rpm.summary);
    package.section = texts.keep(rpm.group);
    if (rpm.size != 0) package.bytes = counted(rpm.size);
    if (rpm.installTime != 0 && counted(rpm.installTime))
        package.installed = static_cast<std::int64_t>(rpm.installTime);
    package.database = database;
    return package;
}

// The database holds the keys that signatures are checked with as packages, too; they are no software.
bool isKey(const RpmPackage& package) {
    return package.name == "gpg-pubkey";
}

// False when a part could not be read.
bool visitSqlite(InputFile& file, std::string_view database, PackageTexts& texts,
                 const PackageVisitor& visit) {
    bool headersWhole = true;
    const ReadBytes read = [&](std::uint64_t offset, std::span<char> bytes) {
        return texts.budget().read(bytes.size()) && file.readAt(offset, bytes) == bytes.size();
    };
    const bool tableWhole = readSqliteTable(read, file.size(), "Packages", [&](std::string_view record) {
        RpmPackage rpm;
        if (!texts.budget().item()) return;
        if (!readRpmHeader(sqliteColumn(record, 1).bytes, rpm)) {
            headersWhole = false;
        } else if (!isKey(rpm)) {
            const InstalledPackage package = packageOf(rpm, database, texts);
            if (!texts.budget().isSpent()) visit(package);
        }
    });
    return tableWhole && headersWhole;
}

PackageDatabase readFile(InputFile& file, const Root& root, const std::string& path, PackageTexts& texts,
                         const PackageVisitor& visit) {
    PackageDatabase result;
    if (file.state() == InputFile::State::Unreadable) result.note(Damage::Unreadable, path);
    if (file.state() != InputFile::State::Open) return result;
    const bool whole = visitSqlite(file, texts.keep(path), texts, visit);
    if (!whole) result.note(texts.budget().isSpent() ? Damage::TooLarge : Damage::Broken, path);
    // Changes that rpm has not yet carried over into the database.
    const std::string log = path + "-wal";
    const InputFile changes(root, log);
    if (changes.state() == InputFile::State::Open && changes.size() > 0) result.note(Damage::Unsaved, log);
    return result;
}

}  // namespace

PackageDatabase visitRpmPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                 const PackageVisitor& visit) {
    if (!database.empty()) {
        InputFile file(root, database);
        return readFile(file, root, database, texts, visit);
    }
    for (const std::string folder : {"/usr/lib/sysimage/rpm", "/var/lib/rpm"}) {
        const std::string path = folder + "/rpmdb.sqlite";
        InputFile file(root, path);
        if (file.state() != InputFile::State::Missing) return readFile(file, root, path, texts, visit);
        // The kinds of databases that rpm had before.
        for (const char* const old : {"/Packages", "/Packages.db"}) {
            if (root.exists(folder + old)) return {Damage::Unsupported, folder + old};
        }
    }
    return {};
}

}  // namespace toolkit
