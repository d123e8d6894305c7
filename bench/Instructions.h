#pragma once

#include <string>
#include <vector>

namespace zavbench {

// Counts the instructions that this program executes for a work, with callgrind. The result does not fluctuate. Ends
// the program with a message if valgrind is missing or the work fails.
double instructionsOf(const std::vector<std::string>& work);

}  // namespace zavbench
