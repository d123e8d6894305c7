#pragma once

#include <string>

#include "cli/Model.h"

namespace zavcli {

// {"scan": {...}, "groups": {"Processor": [{"DeviceID": "cpu0", ...}, ...], ...}}, indented. Every value is a
// string; a group without instances is an empty array.
std::string jsonText(const Inventory& inventory);

}  // namespace zavcli
