// The instances of one group as a table: which values belong under the heading, which columns stand in the
// table.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/Model.h"

namespace zavcli {

struct Column {
    std::string name;
    std::vector<std::string> cells;  // one per instance, printable, "" where it has no value
    int width = 0;
};

struct TableLayout {
    std::vector<Field> common;  // the same, not empty, in every one of several instances
    std::vector<Column>
        columns;  // the others, in the scanner's order, without those that are empty everywhere
};

TableLayout layOut(const std::vector<Instance>& instances);

// The indexes of the columns that stand side by side in so many terminal columns, in order. The first is
// always there; then as many others as there is room for.
std::vector<std::size_t> fittingColumns(const std::vector<Column>& columns, int available);

// Blank columns between two columns.
constexpr int kGap = 2;
// Cells wider than this are clipped.
constexpr int kWidestColumn = 36;

}  // namespace zavcli
