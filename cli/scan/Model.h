// An inventory in memory: what a scan yields and what every output format is written from. All text is UTF-8.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/GroupStatus.h"

namespace zavcli {

struct Field {
    std::string name;
    std::string value;
};

// Field names are unique: the library hands out only the first value of a repeated name.
using Instance = std::vector<Field>;

struct Group {
    int id = 0;
    std::string name;
    std::vector<Instance> instances;
    GroupStatus status = {};
};

// The circumstances of a scan.
struct ScanFacts {
    std::string program;         // "zav 0.1.0"
    std::string time;            // when the scan began, ISO 8601 in UTC
    long long milliseconds = 0;  // how long it took
    std::string toolkit;         // the directory of the scanner
    std::string root;  // the directory that was scanned in place of this machine; empty for this machine
};

struct Inventory {
    ScanFacts scan;
    std::vector<Group> groups;  // every group asked for, also those without instances
    Instance scanInfo = {};     // what the scanner tells of the scan; empty when it tells nothing
};

}  // namespace zavcli
