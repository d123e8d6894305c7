// An installed package, and the result of reading a package database.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace toolkit {

enum class PackageType : std::uint8_t { Dpkg, Rpm, Apk, Pacman, Snap, Flatpak, Opkg, Portage, Homebrew };

inline constexpr std::array kPackageTypes = {
    PackageType::Dpkg,    PackageType::Rpm,  PackageType::Apk,     PackageType::Pacman,  PackageType::Snap,
    PackageType::Flatpak, PackageType::Opkg, PackageType::Portage, PackageType::Homebrew};

// Unknown values are empty. The texts belong to the PackageTexts that the package was read with.
struct InstalledPackage {
    PackageType type{};
    bool anyArchitecture = false;  // dpkg: can be installed for several architectures
    bool finished = true;          // dpkg: false if it is only unpacked or half-configured
    std::string_view name;
    std::string_view version;  // complete, as the package manager shows it
    std::string_view epoch;
    std::string_view upstream;  // the version without epoch and release
    std::string_view release;   // the revision of a snap
    std::string_view architecture;
    std::string_view source;  // the name of the source package
    std::string_view maintainer;
    std::string_view description;  // one line
    std::string_view section;
    std::string_view status;                // dpkg: "install ok installed"
    std::string_view branch;                // flatpak: "stable"
    std::string_view kibibytes;             // installed size, as dpkg writes it
    std::optional<std::uint64_t> bytes;     // installed size, for other types
    std::optional<std::int64_t> installed;  // seconds since 1970; unknown for dpkg
    std::string_view database;              // the file that describes the package
};

using PackageVisitor = std::function<void(const InstalledPackage&)>;

// The result of reading a package database.
struct PackageReading {
    enum class Damage : std::uint8_t {
        None,
        Broken,       // a part could not be read; the packages in all other parts were visited
        Unsupported,  // its format is not supported
        Unsaved,      // a log beside the file has changes that could not be read
        Unreadable,   // it is not a regular file, or reading fails
        TooLarge,     // it exceeds the allowance; the packages up to there were visited
        OutOfTime,    // the time was over; the packages up to there were visited
    };
    Damage damage = Damage::None;
    std::string path;          // the damaged file
    std::uint64_t offset = 0;  // where the damage begins; 0 when unknown

    // Only the first damage is kept.
    void note(Damage what, std::string_view file, std::uint64_t at = 0) {
        if (damage == Damage::None) *this = {what, std::string(file), at};
    }
};

}  // namespace toolkit
