// The installed packages of a machine, whatever package manager installed them.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"
#include "toolkit/machine/packages/PackageTexts.h"

namespace toolkit {

enum class PackageType : std::uint8_t { Dpkg, Rpm, Apk, Pacman, Snap, Flatpak };

inline constexpr std::array kPackageTypes = {PackageType::Dpkg,   PackageType::Rpm,  PackageType::Apk,
                                             PackageType::Pacman, PackageType::Snap, PackageType::Flatpak};

// "dpkg"
std::string_view nameOf(PackageType type);
std::optional<PackageType> packageTypeNamed(std::string_view name);

// What is not known is empty. The texts are kept by the PackageTexts that they were read with.
struct InstalledPackage {
    PackageType type{};
    bool anyArchitecture = false;  // of dpkg: may be installed for several architectures at a time
    std::string_view name;
    std::string_view version;  // the whole of it, as the package manager shows it
    std::string_view epoch;
    std::string_view upstream;  // the version without epoch and release
    std::string_view release;   // of a snap its revision
    std::string_view architecture;
    std::string_view source;  // the name of what it was built from
    std::string_view maintainer;
    std::string_view description;  // one line
    std::string_view section;
    std::string_view status;                // of dpkg: "install ok installed"
    std::string_view branch;                // of a flatpak: "stable"
    std::string_view kibibytes;             // installed size, as dpkg writes it
    std::optional<std::uint64_t> bytes;     // installed size, of other types
    std::optional<std::int64_t> installed;  // seconds since 1970; not told by dpkg itself
    std::string_view database;              // the file that tells of the package
};

using PackageVisitor = std::function<void(const InstalledPackage&)>;

// How reading a database of packages went.
struct PackageDatabase {
    enum class Damage : std::uint8_t {
        None,
        Broken,       // a part could not be read; the packages in all others were visited
        Unsupported,  // of a kind that cannot be read here
        Unsaved,      // a log beside the file has changes that could not be read
        Unreadable,   // it is no regular file, or the system does not give it out
        TooLarge,     // it holds more than is read; the packages up to there were visited
        OutOfTime,    // the time was over; the packages up to there were visited
    };
    Damage damage = Damage::None;
    std::string path;          // of the file that is damaged
    std::uint64_t offset = 0;  // where the damage begins, when that is known

    // Of several damages the first one counts.
    void note(Damage what, std::string_view file, std::uint64_t at = 0) {
        if (damage == Damage::None) *this = {what, std::string(file), at};
    }
};

// Visits the packages of one type that are installed and whole. They are read from `database` when that is not empty,
// else from where they normally lie; where there is nothing, nothing is visited. A file that may not be read is no
// damage: the tree counts it. Each type has the allowance of `texts` for itself. A package whose name, version or
// architecture is longer than kLongestValue is damage; any other text that long is unknown.
PackageDatabase visitPackages(PackageType type, const Root& root, const std::string& database,
                              PackageTexts& texts, const PackageVisitor& visit);

// The same for each type. A package that dpkg tells of twice is visited once, as it was told last.
PackageDatabase visitDpkgPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                  const PackageVisitor& visit);
PackageDatabase visitRpmPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                 const PackageVisitor& visit);
PackageDatabase visitApkPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                 const PackageVisitor& visit);
PackageDatabase visitPacmanPackages(const Root& root, const std::string& database, PackageTexts& texts,
                                    const PackageVisitor& visit);
PackageDatabase visitSnaps(const Root& root, const std::string& database, PackageTexts& texts,
                           const PackageVisitor& visit);
PackageDatabase visitFlatpaks(const Root& root, const std::string& database, PackageTexts& texts,
                              const PackageVisitor& visit);

// The package URL; `distribution` is the ID of os-release.
std::string packageUrl(const InstalledPackage& package, std::string_view distribution);

// The ID of the tree's os-release.
std::string distributionId(const Root& root);

}  // namespace toolkit
