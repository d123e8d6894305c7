// The installed packages of a machine, from the databases of all package managers.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"
#include "toolkit/machine/packages/InstalledPackage.h"
#include "toolkit/machine/packages/PackageTexts.h"

namespace toolkit {

// "dpkg"
std::string_view nameOf(PackageType type);
std::optional<PackageType> packageTypeNamed(std::string_view name);

// Visits the installed packages of one type. Those whose installation was begun but is not `finished` are among them. `database` is the path of the database, or empty for the
// default path. A missing database has no packages. A denied file is not damage, because the tree counts it. Each type has
// the full allowance of `texts`. A package whose name, version or architecture is longer than kMaxValueLength is damage. Any
// other value of that length is unknown.
PackageReading visitPackages(PackageType type, const Root& root, const std::string& database,
                             PackageTexts& texts, const PackageVisitor& visit);

// Whether the tree has a database of any type in its default place, even an empty one.
bool hasPackageDatabase(const Root& root);

// The types whose package manager keeps a database in the tree. The packages of an image without a package manager do not
// count, nor do those of snap and flatpak, which are not package managers of a distribution.
std::vector<PackageType> packageManagers(const Root& root);

// A package manager whose packages are not read, and a place that shows that it has some.
struct UnreadManager {
    std::string_view name;
    std::string_view path;
};
std::vector<UnreadManager> unreadManagers(const Root& root);

// The package URL. `distribution` is the ID in os-release.
std::string packageUrl(const InstalledPackage& package, std::string_view distribution);

// The ID in the tree's os-release.
std::string distributionId(const Root& root);

}  // namespace toolkit
