#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/HardwareInventory.h"

namespace zavcli {

// The names of the groups from which the metrics are made.
std::vector<std::string> metricGroups();

// What the machine is, how many packages it has, and whether the scan was complete, in the text format of Prometheus. A metric
// whose value is not known is left out.
std::string metricsText(const HardwareInventory& inventory);

}  // namespace zavcli
