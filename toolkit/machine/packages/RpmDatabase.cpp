#include "toolkit/machine/packages/RpmDatabase.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>

#include "toolkit/machine/files/InputFile.h"
#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/packages/RpmBlobs.h"
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
    kFileStates = 1029,
    kFileModes = 1030,
    kSourceRpm = 1044,
    kDirectoryIndexes = 1116,
    kBaseNames = 1117,
    kDirectoryNames = 1118,
    kLongSize = 5009,
};

enum Type : std::uint64_t {
    kChar = 1,
    kInt16 = 3,
    kInt32 = 4,
    kInt64 = 5,
    kString = 6,
    kStringArray = 8,
    kTranslatedString = 9
};

struct HeaderEntry {
    std::uint64_t tag;
    std::uint64_t type;
    std::uint64_t count;
    std::string_view bytes;  // from its value to the end of the store
};

// Visits the entries of a header. False when it is damaged.
template <class Visit>
bool visitEntries(std::string_view header, Visit visit) {
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
        visit(HeaderEntry{bigEndian(index, 0, 4), bigEndian(index, 4, 4), bigEndian(index, 12, 4),
                          store.substr(static_cast<std::size_t>(offset))});
    }
    return true;
}

// Takes the next text of an array. False when the array has no other one.
bool nextText(HeaderEntry& array, std::string_view& text) {
    if (array.type != kStringArray || array.count == 0) return false;
    const std::size_t end = array.bytes.find('\0');
    if (end == std::string_view::npos) return false;
    text = array.bytes.substr(0, end);
    array.bytes.remove_prefix(end + 1);
    --array.count;
    return true;
}

// The size of a number of this type, or of a character of a text.
std::size_t widthOf(std::uint64_t type) {
    switch (type) {
        case kInt16:
            return 2;
        case kInt32:
            return 4;
        case kInt64:
            return 8;
        default:
            return 1;
    }
}

// The number with this index. None when the array has another type or is too short.
std::optional<std::uint64_t> numberAt(const HeaderEntry& array, Type type, std::size_t index) {
    const std::size_t width = widthOf(type);
    if (array.type != type || index >= array.count || index >= array.bytes.size() / width) return {};
    return bigEndian(array.bytes, width * index, width);
}

struct FileEntries {
    HeaderEntry baseNames;
    HeaderEntry directoryNames;
    HeaderEntry directoryIndexes;
    HeaderEntry modes;
    HeaderEntry states;
};

FileEntries fileEntriesOf(std::string_view header, bool& whole) {
    FileEntries files{};
    whole = visitEntries(header, [&files](const HeaderEntry& entry) {
        if (entry.tag == kBaseNames) files.baseNames = entry;
        if (entry.tag == kDirectoryNames) files.directoryNames = entry;
        if (entry.tag == kDirectoryIndexes) files.directoryIndexes = entry;
        if (entry.tag == kFileModes) files.modes = entry;
        if (entry.tag == kFileStates) files.states = entry;
    });
    return files;
}

// Whether the file with this index is a directory, or was not installed or was replaced by that of another package.
bool isLeftOut(const FileEntries& files, std::size_t index) {
    constexpr std::uint64_t kTypeBits = 0170000;
    constexpr std::uint64_t kDirectory = 0040000;
    if ((numberAt(files.modes, kInt16, index).value_or(0) & kTypeBits) == kDirectory) return true;
    return numberAt(files.states, kChar, index).value_or(0) != 0;
}

// The text at the beginning of `bytes`. The first of several translations is the original. Empty when no end is found within the
// maximum length.
std::string_view textOf(std::uint64_t type, std::string_view bytes) {
    if (type != kString && type != kTranslatedString) return {};
    const std::size_t end = bytes.substr(0, kMaxValueLength + 1).find('\0');
    return end == std::string_view::npos ? std::string_view() : bytes.substr(0, end);
}

bool numberOf(std::uint64_t type, std::string_view bytes, std::uint64_t& number) {
    if ((type != kInt32 && type != kInt64) || bytes.size() < widthOf(type)) return false;
    number = bigEndian(bytes, 0, widthOf(type));
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
    const bool whole = visitEntries(header, [&package](const HeaderEntry& entry) {
        storeEntry(entry.tag, entry.type, entry.bytes, package);
    });
    return whole && !package.name.empty();
}

bool readRpmFiles(std::string_view header,
                  const std::function<void(std::string_view directory, std::string_view name)>& visit) {
    bool whole = false;
    FileEntries files = fileEntriesOf(header, whole);
    std::vector<std::string_view> directories;
    for (std::string_view name; nextText(files.directoryNames, name);) {
        while (name.ends_with('/')) name.remove_suffix(1);
        directories.push_back(name);
    }
    std::string_view name;
    for (std::size_t i = 0; nextText(files.baseNames, name); ++i) {
        const std::optional<std::uint64_t> directory = numberAt(files.directoryIndexes, kInt32, i);
        if (!directory || *directory >= directories.size()) return false;
        if (!isLeftOut(files, i)) visit(directories[*directory], name);
    }
    return whole && files.baseNames.count == 0;
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

using ReadBlobs = BlobReading (*)(const BlobFile&, const BlobVisitor&);

// The reader for a file of an older format; null for any other file.
ReadBlobs readerOf(InputFile& file) {
    constexpr std::size_t kHashMagic = 12;
    std::array<char, 16> start{};
    const std::string_view bytes(start.data(), file.readAt(0, start));
    if (bytes.starts_with("RpmP")) return readNdbBlobs;
    if (bytes.size() < start.size()) return nullptr;
    const std::string_view magic = bytes.substr(kHashMagic, 4);
    const bool hash =
        magic == std::string_view("\x61\x15\x06\0", 4) || magic == std::string_view("\0\x06\x15\x61", 4);
    return hash ? readBerkeleyBlobs : nullptr;
}

PackageReading readOldFile(InputFile& file, const std::string& path, Budget& budget,
                           const RpmHeaderVisitor& visit, ReadBlobs readBlobs) {
    PackageReading result;
    const BlobFile blobs{[&](std::uint64_t offset, std::span<char> bytes) {
                             return budget.read(bytes.size()) && file.readAt(offset, bytes) == bytes.size();
                         },
                         file.size()};
    bool headersWhole = true;
    const BlobReading reading = readBlobs(blobs, [&](std::string_view header) {
        if (budget.item() && !visit(header, path)) headersWhole = false;
    });
    if (budget.isSpent()) {
        result.note(Damage::TooLarge, path);
    } else if (reading == BlobReading::Unsupported) {
        result.note(Damage::Unsupported, path);
    } else if (reading == BlobReading::Incomplete || !headersWhole) {
        result.note(Damage::Broken, path);
    }
    return result;
}

PackageReading readFile(InputFile& file, const Root& root, const std::string& path, Budget& budget,
                        const RpmHeaderVisitor& visit) {
    PackageReading result;
    if (file.state() == InputFile::State::Unreadable) result.note(Damage::Unreadable, path);
    if (file.state() != InputFile::State::Open) return result;
    if (const ReadBlobs readBlobs = readerOf(file)) return readOldFile(file, path, budget, visit, readBlobs);
    const auto inputOf = [&budget](InputFile& input) -> SqliteInput {
        return {[&](std::uint64_t offset, std::span<char> bytes) {
                    return budget.read(bytes.size()) && input.readAt(offset, bytes) == bytes.size();
                },
                input.size()};
    };
    const std::string logPath = path + "-wal";
    InputFile log(root, logPath);
    if (log.state() == InputFile::State::Unreadable) result.note(Damage::Unreadable, logPath);
    bool headersWhole = true;
    const auto readRow = [&](std::string_view record) {
        if (budget.item() && !visit(sqliteColumn(record, 1).bytes, path)) headersWhole = false;
    };
    const SqliteReading reading = readSqliteTable(inputOf(file), inputOf(log), "Packages", readRow);
    if (budget.isSpent()) {
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
    std::string_view kept;  // the path of the database
    return visitRpmHeaders(root, database, texts.budget(),
                           [&](std::string_view header, const std::string& path) {
                               if (kept.empty()) kept = texts.keep(path);
                               RpmPackage rpm;
                               if (!readRpmHeader(header, rpm)) return false;
                               if (isKey(rpm)) return true;
                               const InstalledPackage package = packageOf(rpm, kept, texts);
                               if (!texts.budget().isSpent()) visit(package);
                               return true;
                           });
}

}  // namespace

PackageReading visitRpmHeaders(const Root& root, const std::string& database, Budget& budget,
                               const RpmHeaderVisitor& visit) {
    if (!database.empty()) {
        InputFile file(root, database);
        return readFile(file, root, database, budget, visit);
    }
    for (const std::string folder : {"/usr/lib/sysimage/rpm", "/var/lib/rpm"}) {
        const std::string path = folder + "/rpmdb.sqlite";
        InputFile file(root, path);
        if (file.state() != InputFile::State::Missing) return readFile(file, root, path, budget, visit);
        // The database formats of earlier versions of rpm.
        for (const char* const name : {"/Packages.db", "/Packages"}) {
            const std::string old = folder + name;
            InputFile packages(root, old);
            if (packages.state() == InputFile::State::Missing) continue;
            const bool known = packages.state() != InputFile::State::Open || readerOf(packages) != nullptr;
            return known ? readFile(packages, root, old, budget, visit)
                         : PackageReading{Damage::Unsupported, old};
        }
    }
    return {};
}

constinit const PackageDatabase kRpmDatabase{PackageType::Rpm, "rpm", "rpm", true, visitPackages};

}  // namespace toolkit
