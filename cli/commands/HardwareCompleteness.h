// Whether a hardware inventory is complete, as messages and as exit status.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/HardwareInventory.h"

namespace zavcli {

// A line for each way in which groups are incomplete, such as "could not be read: SoftwarePackages: the rpm
// database is damaged". Groups of unknown status are not mentioned.
std::vector<std::string> completenessMessages(const HardwareInventory& inventory);

// Whether requested data could not be read: a group is unread or partial for another reason than what users may keep from
// each other, or it is unread or unsupported although the user named it. `named` tells whether the user named the groups.
bool lacksRequestedData(const HardwareInventory& inventory, bool named);

}  // namespace zavcli
