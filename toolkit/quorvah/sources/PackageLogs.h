// The records of package managers about what they installed.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/machine/files/Root.h"

namespace toolkit::quorvah {

struct Upgrade {
    std::int64_t time = 0;  // seconds since 1970
    bool hasZone = false;   // whether the time is known to be in UTC; else it may be off by hours
    std::string name;
    std::string architecture;
    std::string previous;
    std::string version;
};

// The seconds since 1970 of a date "2026-11-21" and a time "06:14:45" in UTC; 0 if they have another form.
std::int64_t secondsOf(std::string_view date, std::string_view time);

// The upgrades in a log of dpkg. The times are those of the machine's zone.
std::vector<Upgrade> parseDpkgLog(std::string_view log);
// The upgrades in a log of pacman.
std::vector<Upgrade> parsePacmanLog(std::string_view log);

struct UpgradeLogs {
    std::vector<Upgrade> dpkg;
    std::vector<Upgrade> pacman;
    bool complete = true;  // false if a log is damaged or too large
};

// The upgrades since this time in the logs of the machine, including those that were packed.
UpgradeLogs readUpgrades(const Root& root, std::int64_t since);

}  // namespace toolkit::quorvah
