#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "toolkit/machine/files/Root.h"
#include "toolkit/machine/packages/InstalledPackage.h"
#include "toolkit/machine/text/Budget.h"

namespace toolkit {

// The values in the header of an installed rpm. The texts are parts of the header. Missing values are empty or 0.
struct RpmPackage {
    std::string_view name;
    std::string_view version;
    std::string_view release;
    bool hasEpoch = false;
    std::uint64_t epoch = 0;
    std::string_view architecture;
    std::string_view vendor;
    std::string_view summary;
    std::string_view group;
    std::string_view sourceRpm;
    std::uint64_t installTime = 0;  // seconds since 1970
    std::uint64_t size = 0;         // bytes
};

// Parses a header in the form of the rpm database. False when it is damaged or has no name.
bool readRpmHeader(std::string_view header, RpmPackage& package);

// Visits the installed files of the package, without its directories: the directory, without a slash at its end, and the
// name. False when the header is damaged.
bool readRpmFiles(std::string_view header,
                  const std::function<void(std::string_view directory, std::string_view name)>& visit);

// Visits the headers in the database. `visit` returns false for a damaged one.
using RpmHeaderVisitor = std::function<bool(std::string_view header, const std::string& database)>;
PackageReading visitRpmHeaders(const Root& root, const std::string& database, Budget& budget,
                               const RpmHeaderVisitor& visit);

// "bash" for "bash-5.1.8-6.el9.src.rpm"; empty for names that are not of this form.
std::string_view nameOfSourceRpm(std::string_view sourceRpm);

}  // namespace toolkit
