// What all kinds of package databases have in common. Each kind is one source file.
#pragma once

#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"
#include "toolkit/machine/packages/InstalledPackage.h"
#include "toolkit/machine/packages/PackageTexts.h"

namespace toolkit {

// A kind of package database.
struct PackageDatabase {
    PackageType type;
    std::string_view name;     // "dpkg"
    std::string_view urlType;  // of its package URLs
    bool ofDistribution;       // whether the distribution is the namespace of its package URLs
    // See visitPackages(), which alone calls this.
    PackageReading (*visit)(const Root& root, const std::string& path, PackageTexts& texts,
                            const PackageVisitor& visit);
};

extern const PackageDatabase kDpkgDatabase;
extern const PackageDatabase kRpmDatabase;
extern const PackageDatabase kApkDatabase;
extern const PackageDatabase kPacmanDatabase;
extern const PackageDatabase kSnapDatabase;
extern const PackageDatabase kFlatpakDatabase;
extern const PackageDatabase kOpkgDatabase;
extern const PackageDatabase kPortageDatabase;
extern const PackageDatabase kHomebrewDatabase;

// A copy of a value. A value that is too long is truncated, to a length that is still more than kMaxValueLength.
std::string_view keepValue(std::string_view value, PackageTexts& texts);

// Sets epoch, upstream version and release from a version of the form [epoch:]upstream[-release].
void splitVersion(InstalledPackage& package);

// `path` with a slash at its end, or `defaultPath` when it is empty.
std::string folderOf(const std::string& path, const char* defaultPath);

// The content of one of many small files that describe one package each. Empty when there is no such file, and when it
// cannot be read; the reason is noted in `reading`.
std::string readSmallFile(const Root& root, const std::string& path, PackageTexts& texts,
                          PackageReading& reading);

}  // namespace toolkit
