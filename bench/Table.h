#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace zavbench {

// Medians by benchmark name: time in seconds, or bytes, instructions or growth where the name says so.
using Medians = std::map<std::string, double>;

// One line of the result: a figure of ours over a figure of a peer, and what it must reach. Without a peer
// the figure is printed as it is; without a bound (0) it is not judged.
struct Row {
    std::string work;
    std::string ours;
    std::string peer;
    double bound;
};

// Prints the rows whose figures are there, as a Markdown table that is also readable as it stands.
void printTable(std::ostream& out, const std::vector<Row>& rows, const Medians& medians);

// True when every judged row whose figures are there reaches its bound.
bool allReached(const std::vector<Row>& rows, const Medians& medians);

}  // namespace zavbench
