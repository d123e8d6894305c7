// Writes inventories as JSON: as one indented document, or as JSON Lines.
#pragma once

#include <string>

#include "cli/formats/JsonValues.h"
#include "cli/scan/HardwareInventory.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// {"scan": {...},
//  "status": {"Processor": {"status": "complete"}, "Memory": {"status": "partial", "reason": "permission"}, ...},
//  "groups": {"Processor": [{"DeviceID": "cpu0", ...}, ...], ...}}
// A group without instances is an empty array.
std::string jsonText(const HardwareInventory& inventory, JsonValues values = JsonValues::Text);

// {"scan": {...}, "complete": true,
//  "results": [{"guid": ..., "name": ..., "cpe": ..., "purl": ..., "variables": {...}, "metadata": {...}, "evidence": [...]}, ...],
//  "undecided": [{"guid": ..., "name": ...}, ...], "warnings": [...]}
// Unknown members are omitted, except guid and variables.
std::string jsonText(const SoftwareInventory& inventory, JsonValues values = JsonValues::Text);

// The hardware document on one line.
std::string jsonLine(const HardwareInventory& inventory, JsonValues values);

// One line per fact, each with the host and the time of the scan, so that the lines of many machines can be put together:
// {"host": ..., "time": ..., "scan": {...}}
// {"host": ..., "time": ..., "group": "Processor", "status": "complete"}
// {"host": ..., "time": ..., "group": "Processor", "instance": 0, "fields": {...}}
std::string jsonLines(const HardwareInventory& inventory, JsonValues values);

// The same for software, where the first line tells whether the scan is complete:
// {"host": ..., "time": ..., "scan": {...}, "complete": true}
// {"host": ..., "time": ..., "result": {"guid": ..., "name": ..., "variables": {...}, ...}}
// {"host": ..., "time": ..., "undecided": {"guid": ..., "name": ...}}
// {"host": ..., "time": ..., "warning": {...}}
std::string jsonLines(const SoftwareInventory& inventory, JsonValues values);

}  // namespace zavcli
