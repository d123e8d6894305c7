// The data model of a hardware inventory, which the scan fills and the formats write. All text is UTF-8.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/Field.h"
#include "cli/scan/GroupStatus.h"
#include "cli/scan/ScanFacts.h"

namespace zavcli {

// Field names are unique, because the library returns only the first value of a repeated name.
using Instance = std::vector<Field>;

struct Group {
    int id = 0;
    std::string name;
    std::vector<Instance> instances;
    GroupStatus status = {};
};

struct HardwareInventory {
    ScanFacts scan;
    std::vector<Group> groups;  // every requested group, also if it has no instances
    Instance scanInfo = {};     // the scanner's report on the scan; empty if it gives none
};

// The instances of the group of that name; none if the group is not in the inventory.
inline const std::vector<Instance>& instancesOf(const HardwareInventory& inventory, std::string_view group) {
    static const std::vector<Instance> kNone;
    for (const Group& each : inventory.groups) {
        if (each.name == group) return each.instances;
    }
    return kNone;
}

}  // namespace zavcli
