#pragma once

#include <string>
#include <vector>

namespace zavbench {

// The instructions that this program executes for a work, as callgrind counts them: a figure that does not
// waver. Ends the program with a message when valgrind is missing or the work fails.
double instructionsOf(const std::vector<std::string>& work);

}  // namespace zavbench
