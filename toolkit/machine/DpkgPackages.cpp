#include <algorithm>
#include <tuple>
#include <vector>

#include "toolkit/machine/DpkgStatus.h"
#include "toolkit/machine/Packages.h"

namespace toolkit {
namespace {

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

class Reader {
  public:
    Reader(const Root& root, PackageTexts& texts) : root_(root), texts_(texts) {}

    // Where no status is given, being told of is being installed.
    void readFile(const std::string& path, std::string_view usualStatus) {
        const std::string_view text = texts_.read(root_, path);
        if (text.empty()) return;
        const std::string_view database = texts_.keep(path);
        constexpr std::size_t kStanza = 512;  // bytes; most are longer
        found_.reserve(found_.size() + text.size() / kStanza + 1);
        DpkgStatus status(text);
        Found found{{}, database, false};
        while (status.next(found.stanza)) {
            if (found.stanza.status.empty()) found.stanza.status = usualStatus;
            found.installed = isInstalled(found.stanza.status);
            found_.push_back(found);
        }
        // dpkg ends every line; a file that ends within one was cut off.
        if (text.back() != '\n' && result_.damage == PackageDatabase::Damage::None) {
            result_ = {PackageDatabase::Damage::Broken, path, text.size()};
        }
    }

    // A file for each package, whose being there says that it is installed; beside them lie lists of checksums.
    void readFolder(const std::string& folder) {
        for (const std::string& name : root_.list(folder)) {
            if (name.ends_with(".md5sums")) continue;
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
    const Root& root_;
    PackageTexts& texts_;
    std::vector<Found> found_;
    PackageDatabase result_;
};

InstalledPackage packageOf(const Found& found) {
    const DpkgStanza& stanza = found.stanza;
    const DpkgVersion version = splitDpkgVersion(stanza.version);
    InstalledPackage package;
    package.type = PackageType::Dpkg;
    package.anyArchitecture = stanza.multiArch == "same";
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
    package.kibibytes = stanza.installedSize;
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
