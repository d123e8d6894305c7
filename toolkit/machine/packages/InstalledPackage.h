// One installed package, and how reading the database that it stands in went.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace toolkit {

enum class PackageType : std::uint8_t { Dpkg, Rpm, Apk, Pacman, Snap, Flatpak };

inline constexpr std::array kPackageTypes = {PackageType::Dpkg,   PackageType::Rpm,  PackageType::Apk,
                                             PackageType::Pacman, PackageType::Snap, PackageType::Flatpak};

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

// How reading a package database went.
struct PackageReading {
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

}  // namespace toolkit
