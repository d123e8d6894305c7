// Writes a hardware inventory for people.
#pragma once

#include <cstddef>
#include <string>

#include "cli/scan/HardwareInventory.h"

namespace zavcli {

struct TableStyle {
    int columns = 100;        // width of the terminal
    bool bold = false;        // headings in bold type
    bool overview = false;    // the most important groups first, long groups and long values shortened
    bool everything = false;  // nothing is omitted: if not all fields fit, each instance becomes a block
    bool fitted = false;      // lines of software are cut to the width
};

// A heading per group. One instance is shown as lines of field and value, several as a table below the values
// that they share. Empty values are omitted.
std::string tableText(const HardwareInventory& inventory, const TableStyle& style);

}  // namespace zavcli
