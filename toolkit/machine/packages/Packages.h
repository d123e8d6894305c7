// The installed packages of a machine, from the databases of all package managers.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"
#include "toolkit/machine/packages/InstalledPackage.h"
#include "toolkit/machine/packages/PackageTexts.h"

namespace toolkit {

// "dpkg"
std::string_view nameOf(PackageType type);
std::optional<PackageType> packageTypeNamed(std::string_view name);

// Visits the packages of one type that are installed and whole. They are read from `database` when that is not empty,
// else from where they normally lie; where there is nothing, nothing is visited. A file that may not be read is no
// damage: the tree counts it. Each type has the allowance of `texts` for itself. A package whose name, version or
// architecture is longer than kMaxValueLength is damage; any other text that long is unknown.
PackageReading visitPackages(PackageType type, const Root& root, const std::string& database,
                             PackageTexts& texts, const PackageVisitor& visit);

// The package URL; `distribution` is the ID of os-release.
std::string packageUrl(const InstalledPackage& package, std::string_view distribution);

// The ID of the tree's os-release.
std::string distributionId(const Root& root);

}  // namespace toolkit
