// Writes inventories as indented JSON.
#pragma once

#include <string>

#include "cli/scan/HardwareInventory.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// {"scan": {...},
//  "status": {"Processor": {"status": "complete"}, "Memory": {"status": "partial", "reason": "permission"}, ...},
//  "groups": {"Processor": [{"DeviceID": "cpu0", ...}, ...], ...}}
// All values are strings. A group without instances is an empty array.
std::string jsonText(const HardwareInventory& inventory);

// {"scan": {...}, "complete": true,
//  "results": [{"guid": ..., "name": ..., "cpe": ..., "purl": ..., "variables": {...}, "metadata": {...}, "evidence": [...]}, ...],
//  "undecided": [{"guid": ..., "name": ...}, ...], "warnings": [...]}
// Unknown members are omitted, except guid and variables.
std::string jsonText(const SoftwareInventory& inventory);

}  // namespace zavcli
