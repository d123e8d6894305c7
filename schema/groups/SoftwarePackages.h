#pragma once

#include "schema/Group.h"

namespace schema {

inline constexpr Field kSoftwarePackagesFields[] = {
    {.name = "InstanceID",
     .key = true,
     .meaning = "package URL, `pkg:deb/debian/bash@5.2.15-2%2Bb8?arch=amd64`",
     .source = "the package databases"},
    {.name = "Name", .meaning = "name of the package", .source = "the package databases"},
    {.name = "VersionString", .meaning = "complete version", .source = "the package databases"},
    {.name = "Manufacturer", .meaning = "maintainer or vendor", .source = "the package databases"},
    {.name = "Description", .meaning = "one line", .source = "the package databases"},
    {.name = "InstallDate",
     .type = Type::Time,
     .meaning = "date of installation; approximate for dpkg",
     .source = "the package databases; `/var/lib/dpkg/info/*.list`"},
    {.name = "Architecture", .meaning = "architecture of the package", .source = "the package databases"},
    {.name = "Epoch", .meaning = "epoch of the version", .source = "the version"},
    {.name = "Release", .meaning = "release or revision of the version", .source = "the version"},
    {.name = "Source", .meaning = "source package", .source = "the package databases"},
    {.name = "Section", .meaning = "section or category", .source = "the package databases"},
    {.name = "InstalledSize",
     .type = Type::Count,
     .unit = "KiB",
     .meaning = "size of the installed files",
     .source = "the package databases"},
    {.name = "Status", .meaning = "status in the package database", .source = "the package databases"},
    {.name = "PackageFormat",
     .type = Type::Choice,
     .choices = "dpkg|rpm|apk|pacman|snap|flatpak|opkg|portage|homebrew",
     .meaning = "package manager that installed it",
     .source = "the package databases"},
};

inline constexpr Group kSoftwarePackages{
    .id = 25,
    .name = "Software Packages",
    .element = "SoftwarePackages",
    .about =
        "One instance per installed package of any supported package manager. Packages that dpkg has "
        "unpacked, but not configured, are listed with their status. Packages of Nix and Guix are not "
        "listed; the group is then partial, with a reason such as `nix-unsupported`.",
    .fields = kSoftwarePackagesFields,
    .columns = "Name VersionString Architecture PackageFormat InstalledSize",
};

}  // namespace schema
