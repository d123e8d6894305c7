#pragma once

#include <string>
#include <vector>

#include "cli/scan/Presets.h"

namespace zavcli {

// How the conditions of the signatures with that identifier come out, in the words of the scanner of that path.
// Throws Failure when the scanner cannot tell.
std::string explainSignature(const std::string& scanner, const std::string& signatures,
                             const std::string& guid, const std::vector<Preset>& presets,
                             const std::vector<Setting>& settings);

}  // namespace zavcli
