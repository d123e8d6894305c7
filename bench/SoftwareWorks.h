#pragma once

#include <map>
#include <string>

#include "bench/Works.h"

namespace zavbench {

// Those of allWorks that deal with the results of software evaluations.
std::map<std::string, Work> softwareWorks();

}  // namespace zavbench
