// Where installed packages are told of; each adds what it finds to the group SoftwarePackages.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "toolkit/machine/Root.h"
#include "toolkit/quorvah/Report.h"

namespace toolkit::quorvah {

void addDpkgPackages(const Root& root, std::string_view distribution, Report& report);
// Reports the group as partial when there is a database of a kind that cannot be read here, or a broken one.
void addRpmPackages(const Root& root, std::string_view distribution, Report& report);
void addApkPackages(const Root& root, std::string_view distribution, Report& report);
void addPacmanPackages(const Root& root, std::string_view distribution, Report& report);
void addSnaps(const Root& root, Report& report);
void addFlatpaks(const Root& root, Report& report);

// Whole KiB that hold so many bytes.
inline std::uint64_t kibOf(std::uint64_t bytes) {
    return bytes / 1024 + (bytes % 1024 != 0 ? 1 : 0);
}

}  // namespace toolkit::quorvah
