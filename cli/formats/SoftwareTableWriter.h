// Writes a software inventory for people.
#pragma once

#include <string>

#include "cli/formats/TableWriter.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// A line per result with its name, version, place and package, sorted by name, and a summary line. Packages of
// programming languages follow the products. With `style.everything`, a paragraph per result instead, in the order
// of the results.
std::string tableText(const SoftwareInventory& inventory, const TableStyle& style);

}  // namespace zavcli
