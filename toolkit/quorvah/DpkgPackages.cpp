#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <deque>
#include <optional>
#include <tuple>
#include <vector>

#include "toolkit/machine/DpkgStatus.h"
#include "toolkit/machine/FileText.h"
#include "toolkit/machine/IsoTime.h"
#include "toolkit/machine/PackageUrl.h"
#include "toolkit/quorvah/PackageSources.h"

namespace toolkit::quorvah {
namespace {

constexpr char kStatusFile[] = "/var/lib/dpkg/status";
constexpr char kStatusFolder[] = "/var/lib/dpkg/status.d";  // of images that were put together without dpkg

// The list of a package's files is written when the package is unpacked, and hardly ever later.
class InstallDates {
  public:
    explicit InstallDates(const Root& root) : folder_(root.open("/var/lib/dpkg/info", O_DIRECTORY)) {}

    std::optional<std::int64_t> of(const DpkgStanza& stanza) const {
        if (!folder_.isOpen() || stanza.package.find('/') != std::string_view::npos) return {};
        std::string name(stanza.package);
        if (stanza.multiArch == "same") {
            const std::size_t length = name.size();
            name.append(":").append(stanza.architecture).append(".list");
            if (const auto time = modified(name)) return time;
            name.resize(length);
        }
        return modified(name.append(".list"));
    }

  private:
    std::optional<std::int64_t> modified(const std::string& name) const {
        struct stat status {};
        if (fstatat(folder_.number(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0) return {};
        return status.st_mtim.tv_sec;
    }

    kest::Descriptor folder_;
};

struct Stanzas {
    std::deque<FileText> files;  // the stanzas are views of them
    std::vector<DpkgStanza> all;
};

void readStatusFile(const Root& root, Stanzas& stanzas) {
    DpkgStatus status(stanzas.files.emplace_back(root, kStatusFile).text());
    DpkgStanza stanza;
    while (status.next(stanza)) stanzas.all.push_back(stanza);
}

// A file for each package, whose being there says that it is installed; beside them lie lists of checksums.
void readStatusFolder(const Root& root, Stanzas& stanzas) {
    for (const std::string& name : root.list(kStatusFolder)) {
        if (name.ends_with(".md5sums")) continue;
        DpkgStatus status(stanzas.files.emplace_back(root, std::string(kStatusFolder) + "/" + name).text());
        DpkgStanza stanza;
        while (status.next(stanza)) {
            if (stanza.status.empty()) stanza.status = "install ok installed";
            stanzas.all.push_back(stanza);
        }
    }
}

bool before(const DpkgStanza& left, const DpkgStanza& right) {
    return std::tie(left.package, left.architecture) < std::tie(right.package, right.architecture);
}

// dpkg knows a package of one name and architecture once; should a file tell of it twice, the later word
// holds.
void dropRepeated(std::vector<DpkgStanza>& stanzas) {
    std::stable_sort(stanzas.begin(), stanzas.end(), before);
    const auto same = [](const DpkgStanza& left, const DpkgStanza& right) {
        return !before(left, right) && !before(right, left);
    };
    const auto kept = std::unique(stanzas.rbegin(), stanzas.rend(), same);
    stanzas.erase(stanzas.begin(), kept.base());
}

void addPackage(const DpkgStanza& stanza, std::string_view distribution, const InstallDates& dates,
                Report& report) {
    const DpkgVersion version = splitDpkgVersion(stanza.version);
    Instance& instance = report.add(
        packageUrl("deb", distribution, stanza.package, stanza.version, {{"arch", stanza.architecture}}));
    instance.set("Name", stanza.package);
    instance.set("VersionString", stanza.version);
    instance.set("Manufacturer", stanza.maintainer);
    instance.set("Description", stanza.description);
    if (const auto time = dates.of(stanza)) instance.set("InstallDate", isoTime(*time));
    instance.set("Architecture", stanza.architecture);
    instance.set("Epoch", version.epoch);
    instance.set("Release", version.revision);
    instance.set("Source", stanza.source.empty() ? stanza.package : stanza.source);
    instance.set("Section", stanza.section);
    instance.set("InstalledSize", stanza.installedSize);
    instance.set("Status", stanza.status);
    instance.set("PackageFormat", "dpkg");
}

}  // namespace

void addDpkgPackages(const Root& root, std::string_view distribution, Report& report) {
    Stanzas stanzas;
    readStatusFile(root, stanzas);
    readStatusFolder(root, stanzas);
    dropRepeated(stanzas.all);
    const InstallDates dates(root);
    for (const DpkgStanza& stanza : stanzas.all) {
        if (isInstalled(stanza.status)) addPackage(stanza, distribution, dates, report);
    }
}

}  // namespace toolkit::quorvah
