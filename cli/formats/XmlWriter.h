// Writes inventories as XML, in the form that the scanners write.
#pragma once

#include <string>

#include "cli/scan/HardwareInventory.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// One element per instance below the root, named after its group, with one element per field. The element
// ScanInfo, which reports the status of each group, is always included. Characters that XML 1.0 does not
// allow become U+FFFD.
std::string xmlText(const HardwareInventory& inventory);

// One element MatchedSignature per result below the root, with its metadata and its variables. The attribute
// `complete` of the root is "false" if a result may be missing.
std::string xmlText(const SoftwareInventory& inventory);

}  // namespace zavcli
