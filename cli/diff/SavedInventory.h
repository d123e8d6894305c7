// Hardware inventories that were written to files: JSON and XML of this command, and XML of a scanner.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/HardwareInventory.h"

namespace zavcli {

struct SavedInventory {
    std::string file;
    std::vector<Group> groups;       // of the file, and those that it says have no instances
    Instance scanInfo = {};          // the scanner's report on the scan; empty if the file has none
    std::string time = {};           // the start of the scan; empty if unknown
    std::optional<bool> privileged;  // whether the scanner ran as root
    bool ofTree = false;             // of the files below a directory rather than of a running machine
    bool sanitized = false;          // private values are hashes

    // Null if the file does not have the group.
    const Group* find(std::string_view group) const;
};

}  // namespace zavcli
