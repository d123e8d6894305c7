// The package formats whose files are small.
#include <charconv>
#include <vector>

#include "toolkit/machine/ApkDatabase.h"
#include "toolkit/machine/KeyFile.h"
#include "toolkit/machine/Lines.h"
#include "toolkit/machine/Packages.h"
#include "toolkit/machine/PacmanDesc.h"
#include "toolkit/machine/SnapMeta.h"

namespace toolkit {
namespace {

std::optional<std::uint64_t> numberOf(std::string_view text) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return {};
    return number;
}

// The parts of [epoch:]upstream[-release].
void splitVersion(InstalledPackage& package) {
    std::string_view rest = package.version;
    const std::size_t dash = rest.rfind('-');
    if (dash != std::string_view::npos) package.release = rest.substr(dash + 1);
    rest = rest.substr(0, dash);
    const std::size_t colon = rest.find(':');
    if (colon != std::string_view::npos) package.epoch = rest.substr(0, colon);
    package.upstream = colon == std::string_view::npos ? rest : rest.substr(colon + 1);
}

InstalledPackage packageOf(const ApkPackage& apk, std::string_view database) {
    InstalledPackage package;
    package.type = PackageType::Apk;
    package.name = apk.name;
    package.version = apk.version;
    splitVersion(package);
    package.architecture = apk.architecture;
    package.source = apk.origin;
    package.maintainer = apk.maintainer;
    package.description = apk.description;
    package.bytes = numberOf(apk.installedSize);
    package.database = database;
    return package;
}

InstalledPackage packageOf(const PacmanPackage& pacman, std::string_view database) {
    InstalledPackage package;
    package.type = PackageType::Pacman;
    package.name = pacman.name;
    package.version = pacman.version;
    splitVersion(package);
    package.architecture = pacman.architecture;
    package.source = pacman.base;
    package.maintainer = pacman.packager;
    package.description = pacman.description;
    package.bytes = numberOf(pacman.size);
    if (const auto time = numberOf(pacman.installDate)) package.installed = static_cast<std::int64_t>(*time);
    package.database = database;
    return package;
}

InstalledPackage packageOf(const SnapMeta& snap, const std::string& revision, const std::string& database,
                           PackageTexts& texts) {
    InstalledPackage package;
    package.type = PackageType::Snap;
    package.name = texts.keep(snap.name);
    package.version = texts.keep(snap.version);
    package.upstream = package.version;
    package.release = texts.keep(revision);
    package.architecture = texts.keep(snap.architectures);
    package.description = texts.keep(snap.summary);
    package.database = texts.keep(database);
    return package;
}

// `deployed` is where the link to what is in use leads: "x86_64/stable". The files do not tell the version.
InstalledPackage flatpakOf(std::string_view name, std::string_view deployed, const std::string& database,
                           PackageTexts& texts) {
    InstalledPackage package;
    package.type = PackageType::Flatpak;
    package.name = name;
    package.branch = texts.keep(deployed);
    package.architecture = takeField(package.branch, '/');
    package.database = texts.keep(database);
    return package;
}

// The directory with a slash behind it.
std::string folderOf(const std::string& database, const char* usual) {
    if (database.empty()) return usual;
    return database.ends_with('/') ? database : database + "/";
}

}  // namespace

PackageDatabase visitApkPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                 const PackageVisitor& visit) {
    const std::string path = database.empty() ? "/lib/apk/db/installed" : database;
    const std::string_view text = texts.read(root, path);
    if (text.empty()) return {};
    const std::string_view kept = texts.keep(path);
    ApkDatabase packages(text);
    ApkPackage package;
    while (packages.next(package)) visit(packageOf(package, kept));
    if (text.back() != '\n') return {PackageDatabase::Damage::Broken, path, text.size()};
    return {};
}

PackageDatabase visitPacmanPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                    const PackageVisitor& visit) {
    const std::string folder = folderOf(database, "/var/lib/pacman/local/");
    PackageDatabase result;
    for (const std::string& name : root.list(folder)) {
        if (name == "ALPM_DB_VERSION") continue;
        const std::string path = folder + name + "/desc";
        const PacmanPackage package = readPacmanDesc(texts.keep(root.read(path).value_or(std::string())));
        if (!package.name.empty()) {
            visit(packageOf(package, texts.keep(path)));
        } else if (result.path.empty()) {
            result = {PackageDatabase::Damage::Broken, path};
        }
    }
    return result;
}

PackageDatabase visitSnaps(const Root& root, const std::string& database, PackageTexts& texts,
                           const PackageVisitor& visit) {
    std::vector<std::string> folders{"/snap/", "/var/lib/snapd/snap/"};
    if (!database.empty()) folders = {folderOf(database, "")};
    for (const std::string& folder : folders) {
        const std::vector<std::string> names = root.list(folder);
        for (const std::string& name : names) {
            const std::string current = folder + name + "/current";
            const std::string path = current + "/meta/snap.yaml";
            const std::optional<std::string> text = root.read(path);
            if (!text) continue;
            const SnapMeta snap = readSnapMeta(*text);
            if (!snap.name.empty()) visit(packageOf(snap, root.linkName(current), path, texts));
        }
        if (!names.empty()) break;  // where both folders are there, one is a link to the other
    }
    return {};
}

PackageDatabase visitFlatpaks(const Root& root, const std::string& database, PackageTexts& texts,
                              const PackageVisitor& visit) {
    const std::string folder = folderOf(database, "/var/lib/flatpak/app/");
    for (const std::string& app : root.list(folder)) {
        const std::string current = folder + app + "/current";
        const std::string path = current + "/active/metadata";
        const std::optional<std::string> text = root.read(path);
        if (!text) continue;
        const std::string_view name = keyFileValue(*text, "Application", "name");
        if (!name.empty()) visit(flatpakOf(texts.keep(name), root.readLink(current), path, texts));
    }
    return {};
}

}  // namespace toolkit
