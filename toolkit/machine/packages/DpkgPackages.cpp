#include <algorithm>
#include <tuple>
#include <vector>

#include "toolkit/machine/files/ParagraphReader.h"
#include "toolkit/machine/packages/DpkgStatus.h"
#include "toolkit/machine/packages/Packages.h"

namespace toolkit {
namespace {

constexpr std::string_view kSame = "same";  // of Multi-Arch
constexpr char kStatusFile[] = "/var/lib/dpkg/status";
constexpr char kStatusFolder[] = "/var/lib/dpkg/status.d";  // of images that were put together without dpkg

struct Found {
    DpkgStanza stanza;
    std::string_view database;
    bool installed = false;
};

bool before(const Found& left, const Found& right) {
    return std::tie(left.stanza.package, left.stanza.architecture) <
           std::tie(right.stanza.package, right.stanza.architecture);
}

// Texts of a package that are mostly those of the one before as well are kept once.
constexpr std::string_view DpkgStanza::*kRepeated[] = {&DpkgStanza::status, &DpkgStanza::architecture,
                                                       &DpkgStanza::maintainer, &DpkgStanza::section};
constexpr std::string_view DpkgStanza::*kOwn[] = {&DpkgStanza::package, &DpkgStanza::version,
                                                  &DpkgStanza::description, &DpkgStanza::source,
                                                  &DpkgStanza::installedSize};

class Reader {
  public:
    Reader(const Root& root, PackageTexts& texts) : root_(root), texts_(texts) {}

    // Where no status is given, being told of is being installed.
    void readFile(const std::string& path, std::string_view usualStatus) {
        ParagraphReader file(root_, path, texts_.budget());
        if (file.state() == InputFile::State::Unreadable)
            result_.note(PackageDatabase::Damage::Unreadable, path);
        const std::string_view database = texts_.keep(path);
        for (std::string_view text = file.next(); !text.empty(); text = file.next())
            readStanzas(text, usualStatus, database);
        if (!file.whole()) result_.note(PackageDatabase::Damage::Broken, path, file.damagedAt());
        if (texts_.budget().isSpent()) result_.note(PackageDatabase::Damage::TooLarge, path);
    }

    // A file for each package, whose being there says that it is installed; beside them lie lists of checksums.
    void readFolder(const std::string& folder) {
        for (const std::string& name : root_.list(folder)) {
            if (name.ends_with(".md5sums")) continue;
            if (texts_.budget().isSpent()) break;
            std::string path = folder;
            readFile(path.append("/").append(name), "install ok installed");
        }
    }

    // dpkg knows a package of one name and architecture once, and writes them in this order. Should a file tell of one
    // twice, the later word holds.
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

    const PackageDatabase& result() const { return result_; }

  private:
    void readStanzas(std::string_view text, std::string_view usualStatus, std::string_view database) {
        DpkgStatus status(text);
        Found found{{}, database, false};
        while (status.next(found.stanza)) {
            if (found.stanza.status.empty()) found.stanza.status = usualStatus;
            found.installed = isInstalled(found.stanza.status);
            if (!texts_.budget().item() || !keep(found.stanza)) return;
            found_.push_back(found);
        }
    }

    // Replaces the texts, which are parts of what is read, by copies. False where they are more than may be kept. What
    // nobody will believe is kept no further than it takes to tell that.
    bool keep(DpkgStanza& stanza) {
        for (const auto text : kRepeated) {
            const std::string_view believable = (stanza.*text).substr(0, kLongestValue + 1);
            if (latest_.*text != believable) latest_.*text = texts_.keep(believable);
            stanza.*text = latest_.*text;
        }
        for (const auto text : kOwn) stanza.*text = texts_.keep((stanza.*text).substr(0, kLongestValue + 1));
        // Only whether it says "same" is asked for.
        stanza.multiArch = stanza.multiArch == kSame ? kSame : std::string_view();
        return !texts_.budget().isSpent();
    }

    const Root& root_;
    PackageTexts& texts_;
    DpkgStanza latest_;  // the kept texts of the stanza before
    std::vector<Found> found_;
    PackageDatabase result_;
};

InstalledPackage packageOf(const Found& found) {
    const DpkgStanza& stanza = found.stanza;
    const DpkgVersion version = splitDpkgVersion(stanza.version);
    InstalledPackage package;
    package.type = PackageType::Dpkg;
    package.anyArchitecture = stanza.multiArch == kSame;
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

}  // namespace

PackageDatabase visitDpkgPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                  const PackageVisitor& visit) {
    Reader reader(root, texts);
    if (!database.empty()) {
        reader.readFile(database, {});
    } else {
        reader.readFile(kStatusFile, {});
        reader.readFolder(kStatusFolder);
    }
    for (const Found& found : reader.sorted()) {
        if (found.installed) visit(packageOf(found));
    }
    return reader.result();
}

}  // namespace toolkit
