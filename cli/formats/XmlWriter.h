#pragma once

#include <string>

#include "cli/scan/Model.h"
#include "cli/scan/Software.h"

namespace zavcli {

// A document of the shape in which the scanner writes: below the root one element per instance, named after
// its group, and in it one element per field. The scanner's own ScanInfo, which tells how each group went, is always
// among them. Characters that XML 1.0 cannot carry become U+FFFD.
std::string xmlText(const Inventory& inventory);

// The same for software: below the root MatchedSignatures one element per result, with its metadata as it is
// and its variables. The root's attribute `complete` is "false" when a result may be missing.
std::string xmlText(const SoftwareReport& report);

}  // namespace zavcli
