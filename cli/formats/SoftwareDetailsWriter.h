#pragma once

#include <string>

#include "cli/formats/TableWriter.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// A paragraph per result, headed by its name and version, with all variables and the first piece of evidence.
std::string detailsText(const SoftwareInventory& inventory, const TableStyle& style);

}  // namespace zavcli
