#include "toolkit/machine/packages/Packages.h"

#include <algorithm>

#include "toolkit/machine/packages/PackageDatabase.h"
#include "toolkit/machine/packages/PackageUrl.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/machine/text/ShellVariables.h"

namespace toolkit {
namespace {

// In the order of PackageType.
constexpr const PackageDatabase* kDatabases[] = {&kDpkgDatabase,   &kRpmDatabase,     &kApkDatabase,
                                                 &kPacmanDatabase, &kSnapDatabase,    &kFlatpakDatabase,
                                                 &kOpkgDatabase,   &kPortageDatabase, &kHomebrewDatabase};

// A default place of a database.
struct Place {
    const char* path;
    PackageType type;
    bool ofManager;  // whether only a package manager makes it
};
constexpr Place kPlaces[] = {
    {"/var/lib/dpkg/status", PackageType::Dpkg, true},
    {"/var/lib/dpkg/status.d", PackageType::Dpkg, false},
    {"/usr/lib/sysimage/rpm", PackageType::Rpm, false},
    {"/usr/lib/sysimage/rpm/rpmdb.sqlite", PackageType::Rpm, true},
    {"/usr/lib/sysimage/rpm/Packages.db", PackageType::Rpm, true},
    {"/var/lib/rpm", PackageType::Rpm, false},
    {"/var/lib/rpm/rpmdb.sqlite", PackageType::Rpm, true},
    {"/var/lib/rpm/Packages.db", PackageType::Rpm, true},
    {"/var/lib/rpm/Packages", PackageType::Rpm, true},
    {"/lib/apk/db/installed", PackageType::Apk, true},
    {"/usr/lib/apk/db/installed", PackageType::Apk, true},
    {"/var/lib/pacman/local", PackageType::Pacman, false},
    {"/var/lib/pacman/local/ALPM_DB_VERSION", PackageType::Pacman, true},
    {"/snap", PackageType::Snap, false},
    {"/var/lib/snapd/snap", PackageType::Snap, false},
    {"/var/lib/flatpak/app", PackageType::Flatpak, false},
    {"/usr/lib/opkg/status", PackageType::Opkg, true},
    {"/var/lib/opkg/status", PackageType::Opkg, true},
    {"/opt/lib/opkg/status", PackageType::Opkg, false},
    {"/var/db/pkg", PackageType::Portage, true},
    {"/home/linuxbrew/.linuxbrew/Cellar", PackageType::Homebrew, false},
    {"/opt/homebrew/Cellar", PackageType::Homebrew, false},
};

constexpr UnreadManager kUnreadManagers[] = {
    {"nix", "/nix/var/nix/profiles"},
    {"guix", "/var/guix/profiles"},
};

using Damage = PackageReading::Damage;

Damage damageOf(Budget::Spent spent) {
    switch (spent) {
        case Budget::Spent::Nothing:
            return Damage::None;
        case Budget::Spent::Time:
            return Damage::OutOfTime;
        default:
            return Damage::TooLarge;
    }
}

// A package with a longer value than kMaxValueLength in one of these is left out.
constexpr std::string_view InstalledPackage::*kNeeded[] = {
    &InstalledPackage::name, &InstalledPackage::version, &InstalledPackage::architecture};
constexpr std::string_view InstalledPackage::*kOthers[] = {
    &InstalledPackage::source,  &InstalledPackage::maintainer, &InstalledPackage::description,
    &InstalledPackage::section, &InstalledPackage::status,     &InstalledPackage::branch,
    &InstalledPackage::release, &InstalledPackage::kibibytes};

template <std::size_t Count>
bool anyTooLong(const InstalledPackage& package, std::string_view InstalledPackage::*const (&texts)[Count]) {
    return std::ranges::any_of(texts, [&](auto text) { return (package.*text).size() > kMaxValueLength; });
}

InstalledPackage withoutLongTexts(InstalledPackage package) {
    for (const auto text : kOthers) {
        if ((package.*text).size() > kMaxValueLength) package.*text = {};
    }
    return package;
}

const PackageDatabase& databaseOf(PackageType type) {
    return *kDatabases[static_cast<std::size_t>(type)];
}

}  // namespace

std::string_view nameOf(PackageType type) {
    return databaseOf(type).name;
}

std::optional<PackageType> packageTypeNamed(std::string_view name) {
    for (const PackageType type : kPackageTypes) {
        if (nameOf(type) == name) return type;
    }
    return {};
}

PackageReading visitPackages(PackageType type, const Root& root, const std::string& database,
                             PackageTexts& texts, const PackageVisitor& visit) {
    texts.begin();
    std::string_view tooLong;  // the file with a package that is left out
    const PackageVisitor visitBelievable = [&](const InstalledPackage& package) {
        if (anyTooLong(package, kNeeded)) {
            tooLong = package.database;
        } else if (anyTooLong(package, kOthers)) {
            visit(withoutLongTexts(package));
        } else {
            visit(package);
        }
    };
    PackageReading result = databaseOf(type).visit(root, database, texts, visitBelievable);
    if (texts.budget().isSpent()) result.damage = damageOf(texts.budget().spent());
    if (!tooLong.empty()) result.note(Damage::Broken, tooLong);
    return result;
}

bool hasPackageDatabase(const Root& root) {
    return std::ranges::any_of(kPlaces, [&root](const Place& place) { return root.exists(place.path); });
}

std::vector<UnreadManager> unreadManagers(const Root& root) {
    std::vector<UnreadManager> managers;
    for (const UnreadManager& manager : kUnreadManagers) {
        const bool known = !managers.empty() && managers.back().name == manager.name;
        if (!known && root.exists(manager.path)) managers.push_back(manager);
    }
    return managers;
}

std::vector<PackageType> packageManagers(const Root& root) {
    std::vector<PackageType> managers;
    for (const Place& place : kPlaces) {
        const bool known = !managers.empty() && managers.back() == place.type;
        if (!known && place.ofManager && root.exists(place.path)) managers.push_back(place.type);
    }
    return managers;
}

std::string packageUrl(const InstalledPackage& package, std::string_view distribution) {
    const PackageDatabase& kind = databaseOf(package.type);
    std::string_view version = package.version;
    std::string_view epoch;
    if (package.type == PackageType::Rpm && !package.epoch.empty()) {
        epoch = package.epoch;
        version.remove_prefix(epoch.size() + 1);
    }
    std::string_view name = package.name;
    std::string_view nameSpace = kind.ofDistribution ? distribution : std::string_view();
    // "sys-apps/util-linux"
    if (package.type == PackageType::Portage && name.find('/') != std::string_view::npos)
        nameSpace = takeField(name, '/');
    return packageUrl(kind.urlType, nameSpace, name, version,
                      {{"arch", package.architecture}, {"branch", package.branch}, {"epoch", epoch}});
}

std::string distributionId(const Root& root) {
    std::optional<std::string> text = root.read("/etc/os-release");
    if (!text) text = root.read("/usr/lib/os-release");
    return text ? ShellVariables(*text).value("ID") : std::string();
}

}  // namespace toolkit
