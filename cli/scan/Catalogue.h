// The signatures that come with the command.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/EvaluationOptions.h"

namespace zavcli {

// The directory of the shipped signatures. Throws Failure if there is none.
std::string catalogueDirectory();

// The settings without which the shipped signatures do not find everything.
std::vector<Setting> catalogueSettings();

}  // namespace zavcli
