// Divides the instances of a group into common values and the columns of a table.
#pragma once

#include <string>
#include <string_view>
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
    std::vector<Field> common;    // values that all of several instances share
    std::vector<Column> columns;  // the other fields, except those that are empty everywhere
};

// All field names of the instances in the order of their first occurrence.
std::vector<std::string> fieldNames(const std::vector<Instance>& instances);

// If the group is in the catalogue, numbers have units that people read, and the columns of several instances begin with those that
// it chooses. `group` is the name of the group.
TableLayout layOut(const std::vector<Instance>& instances, std::string_view group = {});

// Narrows the first columns, the widest one first, until so many of them fit side by side or none can be narrowed.
void narrowFirst(std::vector<Column>& columns, std::size_t count, int available);

// The indexes of the columns that fit side by side into the available width. The first column is always included.
std::vector<std::size_t> fittingColumns(const std::vector<Column>& columns, int available);

}  // namespace zavcli
