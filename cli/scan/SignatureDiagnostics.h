// What the software scanner itself reports on signature files: it is run directly, without the library.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/EvaluationOptions.h"

namespace zavcli {

struct CheckResult {
    bool valid = true;  // whether all files are valid
    std::string text;   // the report of the scanner on each file
};

// Checks whether the files are valid. `scanner` is the path of the program. Throws Failure if the scanner
// cannot tell.
CheckResult checkSignatures(const std::string& scanner, const std::vector<std::string>& paths);

// Explains how each condition of the signatures with that identifier is decided. `signatures` is the path of a file.
// Throws Failure if the scanner cannot tell.
std::string explainSignature(const std::string& scanner, const std::string& signatures,
                             const std::string& guid, const std::vector<Preset>& presets,
                             const std::vector<Setting>& settings);

}  // namespace zavcli
