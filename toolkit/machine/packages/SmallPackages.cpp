// The package formats whose files are small.
#include <algorithm>
#include <vector>

#include "toolkit/machine/files/InputFile.h"
#include "toolkit/machine/files/ParagraphReader.h"
#include "toolkit/machine/packages/ApkDatabase.h"
#include "toolkit/machine/packages/Packages.h"
#include "toolkit/machine/packages/PacmanDesc.h"
#include "toolkit/machine/packages/SnapMeta.h"
#include "toolkit/machine/text/KeyFile.h"
#include "toolkit/machine/text/Lines.h"

namespace toolkit {
namespace {

using Damage = PackageDatabase::Damage;

// A copy of a text, no longer than it takes to tell that nobody will believe it.
std::string_view believable(std::string_view text, PackageTexts& texts) {
    return texts.keep(text.substr(0, kLongestValue + 1));
}

ApkPackage keptTexts(ApkPackage package, PackageTexts& texts) {
    for (std::string_view* const text :
         {&package.name, &package.version, &package.architecture, &package.maintainer, &package.description,
          &package.origin, &package.installedSize})
        *text = believable(*text, texts);
    return package;
}

PacmanPackage keptTexts(PacmanPackage package, PackageTexts& texts) {
    for (std::string_view* const text :
         {&package.name, &package.version, &package.architecture, &package.packager, &package.description,
          &package.base, &package.installDate, &package.size})
        *text = believable(*text, texts);
    return package;
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
    package.bytes = readCount(apk.installedSize);
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
    package.bytes = readCount(pacman.size);
    if (const Count time = readCount(pacman.installDate))
        package.installed = static_cast<std::int64_t>(*time);
    package.database = database;
    return package;
}

InstalledPackage packageOf(const SnapMeta& snap, const std::string& revision, const std::string& database,
                           PackageTexts& texts) {
    InstalledPackage package;
    package.type = PackageType::Snap;
    package.name = believable(snap.name, texts);
    package.version = believable(snap.version, texts);
    package.upstream = package.version;
    package.release = believable(revision, texts);
    package.architecture = believable(snap.architectures, texts);
    package.description = believable(snap.summary, texts);
    package.database = texts.keep(database);
    return package;
}

// `deployed` is where the link to what is in use leads: "x86_64/stable". The files do not tell the version.
InstalledPackage flatpakOf(std::string_view name, std::string_view deployed, const std::string& database,
                           PackageTexts& texts) {
    InstalledPackage package;
    package.type = PackageType::Flatpak;
    package.name = name;
    package.branch = believable(deployed, texts);
    package.architecture = takeField(package.branch, '/');
    package.database = texts.keep(database);
    return package;
}

// The directory with a slash behind it.
std::string folderOf(const std::string& database, const char* usual) {
    if (database.empty()) return usual;
    return database.ends_with('/') ? database : database + "/";
}

// The content of one of many files; more than this is no description of a package. Empty when there is no such file, and
// after what went wrong was noted.
std::string readSmallFile(const Root& root, const std::string& path, PackageTexts& texts,
                          PackageDatabase& result) {
    constexpr std::size_t kLargest = std::size_t{1} << 20;
    InputFile file(root, path);
    if (file.state() == InputFile::State::Unreadable) result.note(Damage::Unreadable, path);
    if (file.state() != InputFile::State::Open) return {};
    std::string content(std::min<std::uint64_t>(file.size() + 1, kLargest + 1), '\0');
    content.resize(file.readAt(0, content));
    const bool whole = content.size() <= kLargest && !file.failed();
    if (!whole) result.note(Damage::Broken, path);
    return whole && texts.budget().read(content.size()) ? content : std::string();
}

}  // namespace

PackageDatabase visitApkPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                 const PackageVisitor& visit) {
    const std::string path = database.empty() ? "/lib/apk/db/installed" : database;
    PackageDatabase result;
    ParagraphReader file(root, path, texts.budget());
    if (file.state() == InputFile::State::Unreadable) result.note(Damage::Unreadable, path);
    const std::string_view kept = texts.keep(path);
    for (std::string_view text = file.next(); !text.empty(); text = file.next()) {
        ApkDatabase packages(text);
        ApkPackage apk;
        while (packages.next(apk) && texts.budget().item()) {
            const InstalledPackage package = packageOf(keptTexts(apk, texts), kept);
            if (!texts.budget().isSpent()) visit(package);
        }
    }
    if (!file.whole()) result.note(Damage::Broken, path, file.damagedAt());
    if (texts.budget().isSpent()) result.note(Damage::TooLarge, path);
    return result;
}

PackageDatabase visitPacmanPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                    const PackageVisitor& visit) {
    const std::string folder = folderOf(database, "/var/lib/pacman/local/");
    PackageDatabase result;
    for (const std::string& name : root.list(folder)) {
        if (name == "ALPM_DB_VERSION") continue;
        if (!texts.budget().item()) {
            result.note(Damage::TooLarge, folder);
            break;
        }
        const std::string path = folder + name + "/desc";
        const std::string text = readSmallFile(root, path, texts, result);
        const PacmanPackage pacman = keptTexts(readPacmanDesc(text), texts);
        if (pacman.name.empty()) {
            result.note(Damage::Broken, path);
        } else if (!texts.budget().isSpent()) {
            visit(packageOf(pacman, texts.keep(path)));
        }
    }
    return result;
}

PackageDatabase visitSnaps(const Root& root, const std::string& database, PackageTexts& texts,
                           const PackageVisitor& visit) {
    std::vector<std::string> folders{"/snap/", "/var/lib/snapd/snap/"};
    if (!database.empty()) folders = {folderOf(database, "")};
    PackageDatabase result;
    for (const std::string& folder : folders) {
        const std::vector<std::string> names = root.list(folder);
        for (const std::string& name : names) {
            if (!texts.budget().item()) {
                result.note(Damage::TooLarge, folder);
                break;
            }
            const std::string current = folder + name + "/current";
            const std::string path = current + "/meta/snap.yaml";
            const SnapMeta snap = readSnapMeta(readSmallFile(root, path, texts, result));
            if (snap.name.empty()) continue;
            const InstalledPackage package = packageOf(snap, root.linkName(current), path, texts);
            if (!texts.budget().isSpent()) visit(package);
        }
        if (!names.empty()) break;  // where both folders are there, one is a link to the other
    }
    return result;
}

PackageDatabase visitFlatpaks(const Root& root, const std::string& database, PackageTexts& texts,
                              const PackageVisitor& visit) {
    const std::string folder = folderOf(database, "/var/lib/flatpak/app/");
    PackageDatabase result;
    for (const std::string& app : root.list(folder)) {
        if (!texts.budget().item()) {
            result.note(Damage::TooLarge, folder);
            break;
        }
        const std::string current = folder + app + "/current";
        const std::string path = current + "/active/metadata";
        const std::string text = readSmallFile(root, path, texts, result);
        const std::string_view name = keyFileValue(text, "Application", "name");
        if (name.empty()) continue;
        const InstalledPackage package =
            flatpakOf(believable(name, texts), root.readLink(current), path, texts);
        if (!texts.budget().isSpent()) visit(package);
    }
    return result;
}

}  // namespace toolkit
