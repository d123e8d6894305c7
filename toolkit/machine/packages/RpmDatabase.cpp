#include "toolkit/machine/packages/RpmDatabase.h"

#include <algorithm>

#include "toolkit/machine/files/InputFile.h"
#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/packages/SqliteFile.h"
#include "toolkit/machine/text/Budget.h"
#include "toolkit/machine/text/ByteOrder.h"
#include "toolkit/machine/text/Checked.h"

namespace toolkit {
namespace {

// A header is two counts, an index of 16-byte entries, and the store that the entries point into:
//     entries, store size, { tag, type, offset, count } ..., store
constexpr std::size_t kCounts = 8;
constexpr std::size_t kEntry = 16;

enum Tag : std::uint64_t {
    kName = 1000,
    kVersion = 1001,
    kRelease = 1002,
    kEpoch = 1003,
    kSummary = 1004,
    kInstallTime = 1008,
    kSize = 1009,
    kVendor = 1011,
    kGroup = 1016,
    kArchitecture = 1022,
    kSourceRpm = 1044,
    kLongSize = 5009,
};

enum Type : std::uint64_t { kInt32 = 4, kInt64 = 5, kString = 6, kTranslatedString = 9 };

// The text at the beginning of `bytes`. The first of several translations is the original. Empty when no end is found within the
// maximum length.
std::string_view textOf(std::uint64_t type, std::string_view bytes) {
    if (type != kString && type != kTranslatedString) return {};
    const std::size_t end = bytes.substr(0, kMaxValueLength + 1).find('\0');
    return end == std::string_view::npos ? std::string_view() : bytes.substr(0, end);
}

bool numberOf(std::uint64_t type, std::string_view bytes, std::uint64_t& number) {
    const std::size_t width = type == kInt32 ? 4 : type == kInt64 ? 8 : 0;
    if (width == 0 || bytes.size() < width) return false;
    number = bigEndian(bytes, 0, width);
    return true;
}

void storeEntry(std::uint64_t tag, std::uint64_t type, std::string_view bytes, RpmPackage& package) {
    switch (tag) {
        case kName:
            package.name = textOf(type, bytes);
            break;
        case kVersion:
            package.version = textOf(type, bytes);
            break;
        case kRelease:
            package.release = textOf(type, bytes);
            break;
        case kEpoch:
            package.hasEpoch = numberOf(type, bytes, package.epoch);
            break;
        case kSummary:
            package.summary = textOf(type, bytes);
            break;
        case kInstallTime:
            numberOf(type, bytes, package.installTime);
            break;
        case kSize:
        case kLongSize:  // replaces kSize for large packages
            numberOf(type, bytes, package.size);
            break;
        case kVendor:
            package.vendor = textOf(type, bytes);
            break;
        case kGroup:
            package.group = textOf(type, bytes);
            break;
        case kArchitecture:
            package.architecture = textOf(type, bytes);
            break;
        case kSourceRpm:
            package.sourceRpm = textOf(type, bytes);
            break;
        default:
            break;
    }
}

}  // namespace

bool readRpmHeader(std::string_view header, RpmPackage& package) {
    package = {};
    if (header.size() < kCounts) return false;
    const std::uint64_t entries = bigEndian(header, 0, 4);
    const std::uint64_t storeSize = bigEndian(header, 4, 4);
    const std::uint64_t indexSize = entries * kEntry;
    if (kCounts + indexSize + storeSize > header.size()) return false;
    std::string_view index = header.substr(kCounts, static_cast<std::size_t>(indexSize));
    const std::string_view store = header.substr(kCounts + index.size(), static_cast<std::size_t>(storeSize));
    for (; !index.empty(); index.remove_prefix(kEntry)) {
        // The offsets of entries that describe regions may be outside of the store.
        const std::uint64_t offset = std::min<std::uint64_t>(bigEndian(index, 8, 4), store.size());
        const std::string_view value = store.substr(static_cast<std::size_t>(offset));
        storeEntry(bigEndian(index, 0, 4), bigEndian(index, 4, 4), value, package);
    }
    return !package.name.empty();
}

std::string_view nameOfSourceRpm(std::string_view sourceRpm) {
    const std::string_view withoutRelease = sourceRpm.substr(0, sourceRpm.rfind('-'));
    const std::size_t version = withoutRelease.rfind('-');
    return version == std::string_view::npos ? std::string_view() : sourceRpm.substr(0, version);
}

namespace {

using Damage = PackageReading::Damage;

// Copies the texts, because the record with the header is valid during the visit only.
InstalledPackage packageOf(const RpmPackage& rpm, std::string_view database, PackageTexts& texts) {
    const std::string epoch = rpm.hasEpoch ? std::to_string(rpm.epoch) : std::string();
    InstalledPackage package;
    package.type = PackageType::Rpm;
    package.name = texts.keep(rpm.name);
    package.version = texts.keep({epoch, epoch.empty() ? "" : ":", rpm.version, "-", rpm.release});
    if (package.version.empty()) return {};  // the budget is spent
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

// Keys for checking signatures are in the database as packages, but are not software.
bool isKey(const RpmPackage& package) {
    return package.name == "gpg-pubkey";
}

// An interrupted transaction leaves its journal behind, and SQLite would roll it back. A journal that is kept between
// transactions begins with zeros.
bool hasUnfinishedTransaction(const Root& root, const std::string& path) {
    InputFile journal(root, path + "-journal");
    char first = 0;
    journal.readAt(0, {&first, sizeof first});
    return first != 0;
}

PackageReading readFile(InputFile& file, const Root& root, const std::string& path, PackageTexts& texts,
                        const PackageVisitor& visit) {
    PackageReading result;
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

PackageReading visitPackages(const Root& root, const std::string& database, PackageTexts& texts,
                             const PackageVisitor& visit) {
    if (!database.empty()) {
        InputFile file(root, database);
        return readFile(file, root, database, texts, visit);
    }
    for (const std::string folder : {"/usr/lib/sysimage/rpm", "/var/lib/rpm"}) {
        const std::string path = folder + "/rpmdb.sqlite";
        InputFile file(root, path);
        if (file.state() != InputFile::State::Missing) return readFile(file, root, path, texts, visit);
        // The database formats of earlier versions of rpm.
        for (const char* const old : {"/Packages", "/Packages.db"}) {
            if (root.exists(folder + old)) return {Damage::Unsupported, folder + old};
        }
    }
    return {};
}

}  // namespace

constinit const PackageDatabase kRpmDatabase{PackageType::Rpm, "rpm", "rpm", true, visitPackages};

}  // namespace toolkit
