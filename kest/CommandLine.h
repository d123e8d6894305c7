#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kest {

// Splits a command line into the program and its arguments. Blanks and tabs separate arguments. Double quotes group
// characters and are removed; `""` is an empty argument. No other character is special. A quote that is not closed
// extends to the end of the line.
//     splitCommandLine("/opt/scan -c \"a b\"")   ->   /opt/scan   -c   a b
std::vector<std::string> splitCommandLine(std::string_view line);

}  // namespace kest
