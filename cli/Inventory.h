#pragma once

#include <string>
#include <vector>

#include "cli/Library.h"
#include "cli/Model.h"

namespace zavcli {

// Scans the groups with the scanner of the toolkit directory that the library was opened with.
// Throws Failure when the scan fails.
std::vector<Group> scanGroups(const Library& library, const std::string& toolkit,
                              const std::vector<GroupName>& groups);

// The same, together with the circumstances. `root` is the scanned directory, empty for this machine.
Inventory takeInventory(const Library& library, const std::string& toolkit, const std::string& root,
                        const std::vector<GroupName>& groups);

}  // namespace zavcli
