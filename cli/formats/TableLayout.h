// Divides the instances of a group into common values and the columns of a table.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/HardwareInventory.h"

namespace zavcli {

// Blanks between two columns.
constexpr int kGap = 2;
// Wider cells are clipped.
constexpr int kMaxColumnWidth = 36;

struct Column {
    std::string name;
    std::vector<std::string> cells;  // one per instance, printable; empty if the instance has no value
    int width = 0;
};

struct TableLayout {
    std::vector<Field> common;  // values that all of several instances share
    std::vector<Column>
        columns;  // the other fields in the order of the scanner, except those that are empty everywhere
};

TableLayout layOut(const std::vector<Instance>& instances);

// The indexes of the columns that fit side by side into the available width. The first column is always included.
std::vector<std::size_t> fittingColumns(const std::vector<Column>& columns, int available);

}  // namespace zavcli
