// Rows of text in columns that fit into the width of a terminal.
#pragma once

#include <string>
#include <vector>

namespace zavcli {

struct RowColumn {
    std::string title;
    int minimum = 8;      // the column is not made narrower than this
    bool isPath = false;  // values lose their middle instead of their end
};

// A line of titles and a line per row, with the columns aligned. If a line would be longer than `width`, the widest
// columns are narrowed and their values cut. A width of 0 means no limit. Values are made printable.
// REQUIRES: each row has a value per column.
std::string rowTable(const std::vector<RowColumn>& columns, const std::vector<std::vector<std::string>>& rows,
                     int width, bool boldTitles);

}  // namespace zavcli
