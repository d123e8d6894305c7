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

// Visits the packages of one type whose installation is complete. `database` is the path of the database, or empty for the
// default path. A missing database has no packages. A denied file is not damage, because the tree counts it. Each type has
// the full allowance of `texts`. A package whose name, version or architecture is longer than kMaxValueLength is damage. Any
// other value of that length is unknown.
PackageReading visitPackages(PackageType type, const Root& root, const std::string& database,
                             PackageTexts& texts, const PackageVisitor& visit);

// The package URL. `distribution` is the ID in os-release.
std::string packageUrl(const InstalledPackage& package, std::string_view distribution);

// The ID in the tree's os-release.
std::string distributionId(const Root& root);

}  // namespace toolkit
