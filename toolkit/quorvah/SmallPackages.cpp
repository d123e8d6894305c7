// The package formats whose files are small.
#include <charconv>
#include <optional>
#include <vector>

#include "toolkit/machine/ApkDatabase.h"
#include "toolkit/machine/IsoTime.h"
#include "toolkit/machine/KeyFile.h"
#include "toolkit/machine/Lines.h"
#include "toolkit/machine/PackageUrl.h"
#include "toolkit/machine/PacmanDesc.h"
#include "toolkit/machine/SnapMeta.h"
#include "toolkit/quorvah/PackageSources.h"

namespace toolkit::quorvah {
namespace {

std::optional<std::uint64_t> numberOf(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return {};
    return number;
}

std::string_view behind(std::string_view text, char separator) {
    const std::size_t at = text.rfind(separator);
    return at == std::string_view::npos ? std::string_view() : text.substr(at + 1);
}

void addApk(const ApkPackage& package, std::string_view distribution, Report& report) {
    Instance& instance = report.add(
        packageUrl("apk", distribution, package.name, package.version, {{"arch", package.architecture}}));
    instance.set("Name", package.name);
    instance.set("VersionString", package.version);
    instance.set("Manufacturer", package.maintainer);
    instance.set("Description", package.description);
    instance.set("Architecture", package.architecture);
    instance.set("Release", behind(package.version, '-'));
    instance.set("Source", package.origin);
    if (const auto size = numberOf(package.installedSize)) instance.set("InstalledSize", kibOf(*size));
    instance.set("PackageFormat", "apk");
}

void addPacman(const PacmanPackage& package, std::string_view distribution, Report& report) {
    const std::size_t colon = package.version.find(':');
    Instance& instance = report.add(
        packageUrl("alpm", distribution, package.name, package.version, {{"arch", package.architecture}}));
    instance.set("Name", package.name);
    instance.set("VersionString", package.version);
    instance.set("Manufacturer", package.packager);
    instance.set("Description", package.description);
    const auto time = numberOf(package.installDate);
    if (time) instance.set("InstallDate", isoTime(static_cast<std::int64_t>(*time)));
    instance.set("Architecture", package.architecture);
    if (colon != std::string_view::npos) instance.set("Epoch", package.version.substr(0, colon));
    instance.set("Release", behind(package.version, '-'));
    instance.set("Source", package.base);
    if (const auto size = numberOf(package.size)) instance.set("InstalledSize", kibOf(*size));
    instance.set("PackageFormat", "pacman");
}

void addSnap(const SnapMeta& snap, std::string_view revision, Report& report) {
    Instance& instance =
        report.add(packageUrl("snap", "", snap.name, snap.version, {{"arch", snap.architectures}}));
    instance.set("Name", snap.name);
    instance.set("VersionString", snap.version);
    instance.set("Description", snap.summary);
    instance.set("Architecture", snap.architectures);
    instance.set("Release", revision);
    instance.set("PackageFormat", "snap");
}

// `deployed` is where the link to what is in use leads: "x86_64/stable". The files do not tell the version.
void addFlatpak(std::string_view name, std::string_view deployed, Report& report) {
    const std::string_view architecture = takeField(deployed, '/');
    Instance& instance =
        report.add(packageUrl("flatpak", "", name, "", {{"arch", architecture}, {"branch", deployed}}));
    instance.set("Name", name);
    instance.set("Architecture", architecture);
    instance.set("PackageFormat", "flatpak");
}

}  // namespace

void addApkPackages(const Root& root, std::string_view distribution, Report& report) {
    const std::optional<std::string> text = root.read("/lib/apk/db/installed");
    if (!text) return;
    ApkDatabase database(*text);
    ApkPackage package;
    while (database.next(package)) addApk(package, distribution, report);
}

void addPacmanPackages(const Root& root, std::string_view distribution, Report& report) {
    const std::string folder = "/var/lib/pacman/local/";
    for (const std::string& name : root.list(folder)) {
        const std::optional<std::string> text = root.read(folder + name + "/desc");
        if (!text) continue;
        const PacmanPackage package = readPacmanDesc(*text);
        if (!package.name.empty()) addPacman(package, distribution, report);
    }
}

void addSnaps(const Root& root, Report& report) {
    for (const std::string folder : {"/snap/", "/var/lib/snapd/snap/"}) {
        const std::vector<std::string> names = root.list(folder);
        for (const std::string& name : names) {
            const std::optional<std::string> text = root.read(folder + name + "/current/meta/snap.yaml");
            if (!text) continue;
            const SnapMeta snap = readSnapMeta(*text);
            if (!snap.name.empty()) addSnap(snap, root.linkName(folder + name + "/current"), report);
        }
        if (!names.empty()) return;  // where both folders are there, one is a link to the other
    }
}

void addFlatpaks(const Root& root, Report& report) {
    const std::string folder = "/var/lib/flatpak/app/";
    for (const std::string& app : root.list(folder)) {
        const std::optional<std::string> text = root.read(folder + app + "/current/active/metadata");
        if (!text) continue;
        const std::string_view name = keyFileValue(*text, "Application", "name");
        if (!name.empty()) addFlatpak(name, root.readLink(folder + app + "/current"), report);
    }
}

}  // namespace toolkit::quorvah
