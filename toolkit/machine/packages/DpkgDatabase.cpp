#include "toolkit/machine/packages/DpkgDatabase.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <span>
#include <tuple>
#include <vector>

#include "kest/Ascii.h"
#include "toolkit/machine/files/ParagraphReader.h"
#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/text/Checked.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

struct StanzaField {
    std::string_view name;
    std::string_view DpkgStanza::*value;
};

// Names with the same first letter must be adjacent.
constexpr StanzaField kFields[] = {
    {"Package", &DpkgStanza::package},         {"Status", &DpkgStanza::status},
    {"Section", &DpkgStanza::section},         {"Source", &DpkgStanza::source},
    {"Version", &DpkgStanza::version},         {"Architecture", &DpkgStanza::architecture},
    {"Maintainer", &DpkgStanza::maintainer},   {"Multi-Arch", &DpkgStanza::multiArch},
    {"Description", &DpkgStanza::description}, {"Installed-Size", &DpkgStanza::installedSize},
};

// The fields whose names begin with a letter, in either case. This skips most lines at once, as they continue a field or
// belong to a field that is not used.
using Fields = std::span<const StanzaField>;
constexpr std::array<Fields, 256> kFieldsOfLetter = [] {
    std::array<Fields, 256> fields;
    for (std::size_t first = 0, end = 0; first < std::size(kFields); first = end) {
        const char letter = kFields[first].name.front();
        while (end < std::size(kFields) && kFields[end].name.front() == letter) ++end;
        const auto code = static_cast<unsigned char>(letter);
        fields[code] = fields[code ^ 0x20U] = Fields(kFields).subspan(first, end - first);
    }
    return fields;
}();

// Whether a line is a field of this name. Names are case-insensitive.
bool gives(std::string_view line, std::string_view name) {
    return line.size() > name.size() && line[name.size()] == ':' &&
           (line.starts_with(name) || kest::equalsIgnoringCase(line.substr(0, name.size()), name));
}

void storeField(std::string_view line, DpkgStanza& stanza) {
    for (const StanzaField& field : kFieldsOfLetter[static_cast<unsigned char>(line.front())]) {
        if (!gives(line, field.name)) continue;
        std::string_view& value = stanza.*field.value;
        if (value.empty()) value = trimmed(line.substr(field.name.size() + 1));
        return;
    }
}

}  // namespace

bool DpkgStatusParser::next(DpkgStanza& stanza) {
    stanza = {};
    std::string_view line;
    while (nextLine(rest_, line)) {
        if (line.empty()) {
            if (!stanza.package.empty()) break;
            stanza = {};
        } else {
            storeField(line, stanza);
        }
    }
    stanza.source = trimmed(stanza.source.substr(0, stanza.source.find('(')));
    if (!stanza.package.empty()) return true;
    stanza = {};
    return false;
}

namespace {

// The last word: "installed" of "install ok installed".
std::string_view stateOf(std::string_view status) {
    const std::size_t blank = status.rfind(' ');
    return blank == std::string_view::npos ? std::string_view() : status.substr(blank + 1);
}

}  // namespace

bool isUnfinished(std::string_view status) {
    const std::string_view state = stateOf(status);
    return state == "unpacked" || state == "half-configured";
}

bool isInstalled(std::string_view status) {
    const std::string_view state = stateOf(status);
    return state == "installed" || state == "triggers-awaited" || state == "triggers-pending";
}

DpkgVersion splitDpkgVersion(std::string_view version) {
    DpkgVersion parts;
    const std::size_t colon = version.find(':');
    if (colon != std::string_view::npos) {
        parts.epoch = version.substr(0, colon);
        version.remove_prefix(colon + 1);
    }
    const std::size_t dash = version.rfind('-');
    if (dash != std::string_view::npos) parts.revision = version.substr(dash + 1);
    parts.upstream = version.substr(0, dash);
    return parts;
}

namespace {

constexpr std::string_view kSame = "same";  // value of Multi-Arch
constexpr char kStatusFile[] = "/var/lib/dpkg/status";
constexpr char kStatusFolder[] = "/var/lib/dpkg/status.d";  // in images that were built without dpkg

struct Found {
    DpkgStanza stanza;
    std::string_view database;
    bool installed = false;
    bool unfinished = false;
};

bool before(const Found& left, const Found& right) {
    return std::tie(left.stanza.package, left.stanza.architecture) <
           std::tie(right.stanza.package, right.stanza.architecture);
}

// Values that are often the same as in the previous package; equal ones share one copy.
constexpr std::string_view DpkgStanza::*kRepeated[] = {&DpkgStanza::status, &DpkgStanza::architecture,
                                                       &DpkgStanza::maintainer, &DpkgStanza::section};
constexpr std::string_view DpkgStanza::*kOwn[] = {&DpkgStanza::package, &DpkgStanza::version,
                                                  &DpkgStanza::description, &DpkgStanza::source,
                                                  &DpkgStanza::installedSize};

class Reader {
  public:
    Reader(const Root& root, PackageTexts& texts) : root_(root), texts_(texts) {}

    // `defaultStatus` is the status of packages without one.
    void readFile(const std::string& path, std::string_view defaultStatus) {
        ParagraphReader file(root_, path, texts_.budget());
        if (file.state() == InputFile::State::Unreadable)
            result_.note(PackageReading::Damage::Unreadable, path);
        const std::string_view database = texts_.keep(path);
        for (std::string_view text = file.next(); !text.empty(); text = file.next())
            readStanzas(text, defaultStatus, database);
        if (!file.whole()) result_.note(PackageReading::Damage::Broken, path, file.damagedAt());
        if (texts_.budget().isSpent()) result_.note(PackageReading::Damage::TooLarge, path);
    }

    // The folder has one file per installed package, and lists of checksums.
    void readFolder(const std::string& folder) {
        for (const std::string& name : root_.list(folder)) {
            if (name.ends_with(".md5sums")) continue;
            if (texts_.budget().isSpent()) break;
            std::string path = folder;
            readFile(path.append("/").append(name), "install ok installed");
        }
    }

    // dpkg writes one stanza per name and architecture, sorted. Of duplicates in a damaged file the last one is kept.
    std::vector<Found>& sorted() {
        const auto inOrder = [](const Found& left, const Found& right) { return !before(left, right); };
        if (std::ranges::adjacent_find(found_, inOrder) == found_.end()) return found_;
        std::ranges::stable_sort(found_, before);
        const auto same = [](const Found& left, const Found& right) {
            return !before(left, right) && !before(right, left);
        };
        const auto kept = std::unique(found_.rbegin(), found_.rend(), same);
        found_.erase(found_.begin(), kept.base());
        return found_;
    }

    const PackageReading& result() const { return result_; }

  private:
    void readStanzas(std::string_view text, std::string_view defaultStatus, std::string_view database) {
        DpkgStatusParser status(text);
        Found found{{}, database};
        while (status.next(found.stanza)) {
            if (found.stanza.status.empty()) found.stanza.status = defaultStatus;
            found.installed = isInstalled(found.stanza.status);
            found.unfinished = isUnfinished(found.stanza.status);
            if (!texts_.budget().item() || !keep(found.stanza)) return;
            found_.push_back(found);
        }
    }

    // Replaces the texts, which are parts of the read buffer, by copies. False when the budget does not allow more. Values that
    // are too long are truncated, to a length that is still too long.
    bool keep(DpkgStanza& stanza) {
        for (const auto text : kRepeated) {
            const std::string_view believable = (stanza.*text).substr(0, kMaxValueLength + 1);
            if (latest_.*text != believable) latest_.*text = texts_.keep(believable);
            stanza.*text = latest_.*text;
        }
        for (const auto text : kOwn)
            stanza.*text = texts_.keep((stanza.*text).substr(0, kMaxValueLength + 1));
        // Only the value "same" is used.
        stanza.multiArch = stanza.multiArch == kSame ? kSame : std::string_view();
        return !texts_.budget().isSpent();
    }

    const Root& root_;
    PackageTexts& texts_;
    DpkgStanza latest_;  // copies of the previous stanza's texts
    std::vector<Found> found_;
    PackageReading result_;
};

InstalledPackage packageOf(const Found& found) {
    const DpkgStanza& stanza = found.stanza;
    const DpkgVersion version = splitDpkgVersion(stanza.version);
    InstalledPackage package;
    package.type = PackageType::Dpkg;
    package.anyArchitecture = stanza.multiArch == kSame;
    package.finished = !found.unfinished;
    package.name = stanza.package;
    package.version = stanza.version;
    package.epoch = version.epoch;
    package.upstream = version.upstream;
    package.release = version.revision;
    package.architecture = stanza.architecture;
    package.source = stanza.source.empty() ? stanza.package : stanza.source;
    package.maintainer = stanza.maintainer;
    package.description = stanza.description;
    package.section = stanza.section;
    package.status = stanza.status;
    if (readCount(stanza.installedSize)) package.kibibytes = stanza.installedSize;
    package.database = found.database;
    return package;
}

PackageReading visitPackages(const Root& root, const std::string& database, PackageTexts& texts,
                             const PackageVisitor& visit) {
    Reader reader(root, texts);
    if (!database.empty()) {
        reader.readFile(database, {});
    } else {
        reader.readFile(kStatusFile, {});
        reader.readFolder(kStatusFolder);
    }
    for (const Found& found : reader.sorted()) {
        if (found.installed || found.unfinished) visit(packageOf(found));
    }
    return reader.result();
}

}  // namespace

constinit const PackageDatabase kDpkgDatabase{PackageType::Dpkg, "dpkg", "deb", true, visitPackages};

}  // namespace toolkit
