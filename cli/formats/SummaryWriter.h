// Writes what a machine is on one screen.
#pragma once

#include <string>
#include <vector>

#include "cli/formats/TableWriter.h"
#include "cli/scan/HardwareInventory.h"

namespace zavcli {

// The names of the groups from which the summary is made.
std::vector<std::string> summaryGroups();

// What needs attention: file systems that are nearly full, processors that are offline, memory modules that do not match or are not
// seen by the system, and groups that could not be read. A sentence each.
std::vector<std::string> attentionLines(const HardwareInventory& inventory);

// A line for each part of the machine, then what needs attention.
std::string summaryText(const HardwareInventory& inventory, const std::vector<std::string>& attention,
                        const TableStyle& style);

}  // namespace zavcli
