#pragma once

#include <cstddef>
#include <string>

#include "cli/scan/Model.h"

namespace zavcli {

struct TableStyle {
    int columns = 100;        // width of the terminal
    bool bold = false;        // headings in bold type
    bool overview = false;    // all groups: what matters most first, long groups and long values cut short
    bool everything = false;  // nothing is left out: fields that do not fit make one block per instance
};

// The inventory for people: a heading per group; one instance as lines of field and value, several as a table
// below the values that all of them share. Empty values are left out, and control characters spelt out.
std::string tableText(const Inventory& inventory, const TableStyle& style);

}  // namespace zavcli
