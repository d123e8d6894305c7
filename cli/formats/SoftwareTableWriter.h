// Writes a software inventory for people.
#pragma once

#include <string>

#include "cli/formats/TableWriter.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// A paragraph per result, headed by its name and version, and a summary line.
std::string tableText(const SoftwareInventory& inventory, const TableStyle& style);

}  // namespace zavcli
