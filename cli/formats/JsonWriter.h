#pragma once

#include <string>

#include "cli/scan/Model.h"
#include "cli/scan/Software.h"

namespace zavcli {

// {"scan": {...}, "status": {"Processor": {"status": "complete"}, "Memory": {"status": "partial", "reason":
// "permission"}, ...}, "groups": {"Processor": [{"DeviceID": "cpu0", ...}, ...], ...}}, indented. Every value is a
// string; a group without instances is an empty array, and its status tells whether there are none.
std::string jsonText(const Inventory& inventory);

// {"scan": {...}, "complete": true, "results": [{"guid": ..., "name": ..., "variables": {...}, "metadata": {...},
// "evidence": [...]}, ...], "undecided": [{"guid": ..., "name": ...}, ...], "warnings": [...]}, indented. What is not known
// is left out, but for guid and variables.
std::string jsonText(const SoftwareReport& report);

}  // namespace zavcli
