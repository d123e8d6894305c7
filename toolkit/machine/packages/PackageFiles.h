// Which files belong to the installed packages, from the lists that the package managers keep.
#pragma once

#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"
#include "toolkit/machine/packages/InstalledPackage.h"
#include "toolkit/machine/text/Budget.h"

namespace toolkit {

// Receives the files of one package after the other.
class PackageFileVisitor {
  public:
    virtual ~PackageFileVisitor() = default;
    // The files of this package follow. An empty version or architecture is unknown. False if they are not wanted.
    virtual bool onPackage(std::string_view name, std::string_view version,
                           std::string_view architecture) = 0;
    // `directory` is absolute and has no slash at its end; it is empty for the top. Directories of packages are left out as
    // far as their lists tell them apart.
    virtual void onFile(std::string_view directory, std::string_view name) = 0;
};

// Visits the files of all packages of one type. `database` is the path of the package database, or empty for the default
// path. Types whose packages are directories, snap and flatpak, have no lists.
PackageReading visitPackageFiles(PackageType type, const Root& root, const std::string& database,
                                 Budget& budget, PackageFileVisitor& visitor);

// The directory with all files of a package, for types whose packages are directories; otherwise empty.
std::string directoryOfPackage(PackageType type, std::string_view database, std::string_view release);

}  // namespace toolkit
