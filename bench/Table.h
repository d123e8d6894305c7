#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace zavbench {

// Medians by benchmark name: seconds, or bytes, instructions, facts or growth if the name says so. Those of a peer that is not
// installed are no numbers.
using Medians = std::map<std::string, double>;

// A row of the table: a figure of this project divided by that of a peer, and the bound for the ratio. Without a peer
// the figure itself is printed. A bound of 0 is not checked.
struct Row {
    std::string work;
    std::string ours;
    std::string peer;
    double bound;
};

// Prints the rows that have figures as a Markdown table with aligned columns.
void printTable(std::ostream& out, const std::vector<Row>& rows, const Medians& medians);

// Whether every row with figures and a bound is within its bound.
bool allReached(const std::vector<Row>& rows, const Medians& medians);

}  // namespace zavbench
