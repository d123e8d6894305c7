#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace kest {

// The arguments of a command line, the program first. Blanks and tabs split; double quotes group and are
// removed; `""` is an empty argument. Nothing else is special. A quote that is never closed reaches to the
// end.
//     splitCommandLine("/opt/scan -c \"a b\"")   ->   /opt/scan   -c   a b
std::vector<std::string> splitCommandLine(std::string_view line);

}  // namespace kest
