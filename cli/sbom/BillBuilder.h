#pragma once

#include <set>
#include <string>

#include "cli/sbom/BillOfMaterials.h"
#include "cli/scan/HardwareInventory.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// The groups of the hardware inventory that a bill is made of.
inline constexpr const char* kSystemGroup = "OperatingSystem";
inline constexpr const char* kPackagesGroup = "SoftwarePackages";

// The bill of both inventories, without hashes. Results for the same package of a programming language, or for the
// same product at the same place, are one component.
BillOfMaterials makeBill(const HardwareInventory& hardware, const SoftwareInventory& software);

// The paths of all files in the evidence of the components.
std::set<std::string> evidentFiles(const BillOfMaterials& bill);

}  // namespace zavcli
