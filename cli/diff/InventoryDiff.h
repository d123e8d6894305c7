// How two hardware inventories differ. What each field means is taken from the catalogue (schema/).
#pragma once

#include <string>
#include <vector>

#include "cli/diff/SavedInventory.h"

namespace zavcli {

// What a scan needs to see a value that the other inventory lacks or has from another source.
enum class Needs {
    Nothing,      // both scans could see it: the machine has changed
    Root,         // only one of the scans ran as root
    LiveMachine,  // one of the inventories is of files below a directory
};

struct ValueChange {
    std::string field;
    std::string before;
    std::string after;
    bool list = false;  // several values joined by ";"
    Needs needs = Needs::Nothing;
};

struct InstanceChange {
    enum class Kind { Added, Removed, Changed };

    Kind kind = Kind::Changed;
    Instance key = {};       // the fields that tell it apart; empty for the only instance of a group
    std::string label = {};  // the values of the key and a name, for people
    Instance fields = {};    // of an added or removed instance: all that are not volatile and not empty
    std::vector<ValueChange> values = {};  // of a changed instance
    Needs needs = Needs::Nothing;          // of an added or removed instance
};

struct GroupChanges {
    std::string group;
    std::vector<InstanceChange> instances;
};

struct InventoryDiff {
    std::vector<GroupChanges> groups;  // those that differ
    std::vector<std::string> notes;    // what could not be compared, and why

    // Whether the machine itself differs, apart from what only one of the scans could see.
    bool machineDiffers() const;
    // Leaves out what only one of the scans could see.
    void ignoreAccess();
};

// Compares all groups but ScanInfo, which describes the scan. Volatile fields are left out. Instances are paired by
// their keys; those with the same keys are paired in their order.
InventoryDiff compareInventories(const SavedInventory& before, const SavedInventory& after);

}  // namespace zavcli
