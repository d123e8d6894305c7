#pragma once

#include <string>
#include <vector>

#include "cli/scan/Library.h"
#include "cli/scan/Model.h"

namespace zavcli {

// The scanner's own report; every scanner can give it, on every machine.
inline const GroupName kScanInfo{20, "ScanInfo"};

// Scans the groups with the scanner of the toolkit directory that the library was opened with.
// Throws Failure when the scan fails.
std::vector<Group> scanGroups(Library& library, const std::string& toolkit,
                              const std::vector<GroupName>& groups);

// The same, together with the circumstances and with what became of each group. `root` is the scanned directory, empty for this machine.
Inventory takeInventory(Library& library, const std::string& toolkit, const std::string& root,
                        const std::vector<GroupName>& groups);

}  // namespace zavcli
