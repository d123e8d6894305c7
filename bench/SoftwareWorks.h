#pragma once

#include <map>
#include <string>

#include "bench/Works.h"

namespace zavbench {

// The works of allWorks() for software evaluations.
std::map<std::string, Work> softwareWorks();

}  // namespace zavbench
