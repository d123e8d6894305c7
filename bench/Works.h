#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace zavbench {

using Arguments = std::vector<std::string>;

// Prepares a work, which is not measured, and returns the work itself, which tells whether it succeeded.
using Work = std::function<std::function<bool()>(const Arguments&)>;

// What this library does, and what its peers do with the same input.
const std::map<std::string, Work>& allWorks();

}  // namespace zavbench
