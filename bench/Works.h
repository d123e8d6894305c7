#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace zavbench {

using Arguments = std::vector<std::string>;

// Prepares a work without measuring it and returns the function to measure, which returns whether it succeeded.
using Work = std::function<std::function<bool()>(const Arguments&)>;

// The works of this library and the same works done by its peers.
const std::map<std::string, Work>& allWorks();

}  // namespace zavbench
