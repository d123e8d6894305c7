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

// A transaction that was broken off leaves its journal behind, with which SQLite would undo it. Where the journal is kept
// between transactions, its first bytes are zero.
bool hasUnfinishedTransaction(const Root& root, const std::string& path) {
    InputFile journal(root, path + "-journal");
    char first = 0;
    return journal.state() == InputFile::State::Open && journal.readAt(0, {&first, 1}) == 1 && first != 0;
}

PackageDatabase readFile(InputFile& file, const Root& root, const std::string& path, PackageTexts& texts,
                         const PackageVisitor& visit) {
    PackageDatabase result;
    if (file.state() == InputFile::State::Unreadable) result.note(Damage::Unreadable, path);
    if (file.state() != InputFile::State::Open) return result;
    const auto inputOf = [&texts](InputFile& input) -> SqliteInput {
        return {[&](std::uint64_t offset, std::span<char> bytes) {
                    return texts.budget().read(bytes.size()) && input.readAt(offset, bytes) == bytes.size();
                },
                input.size()};
    };
    const std::string_view database = texts.keep(path);
    const std::string logPath = path + "-wal";
    InputFile log(root, logPath);
    if (log.state() == InputFile::State::Unreadable) result.note(Damage::Unreadable, logPath);
    bool headersWhole = true;
    const auto readRow = [&](std::string_view record) {
        RpmPackage rpm;
        if (!texts.budget().item()) return;
        if (!readRpmHeader(sqliteColumn(record, 1).bytes, rpm)) {
            headersWhole = false;
        } else if (!isKey(rpm)) {
            const InstalledPackage package = packageOf(rpm, database, texts);
            if (!texts.budget().isSpent()) visit(package);
        }
    };
    const SqliteReading reading = readSqliteTable(inputOf(file), inputOf(log), "Packages", readRow);
    if (texts.budget().isSpent()) {
        result.note(Damage::TooLarge, path);
    } else if (reading == SqliteReading::Incomplete || !headersWhole) {
        result.note(Damage::Broken, path);
    } else if (reading == SqliteReading::LogIgnored) {
        result.note(Damage::Unsaved, logPath);
    } else if (hasUnfinishedTransaction(root, path)) {
        result.note(Damage::Unsaved, path + "-journal");
    }
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
