#pragma once

#include <string>

#include "cli/Model.h"

namespace zavcli {

// A document of the shape in which the scanner writes: below the root one element per instance, named after
// its group, and in it one element per field. Characters that XML 1.0 cannot carry become U+FFFD.
std::string xmlText(const Inventory& inventory);

}  // namespace zavcli
