// Evaluates signature files through the library.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "cli/scan/LibraryHandle.h"
#include "cli/scan/ScannerOutput.h"
#include "cli/scan/SignatureFile.h"
#include "cli/scan/SoftwareInventory.h"

namespace zavcli {

// Evaluates the files with the scanner at the path `scanner`. Files that can be joined are evaluated in one
// run. `output` is the listener of the library. Only results with one of the identifiers are kept, or all if
// there are no identifiers. `report` is called with each line of the scanner about files that it refuses. Throws
// Failure if an evaluation fails.
SoftwareInventory evaluateFiles(LibraryHandle& library, ScannerOutput& output, const std::string& scanner,
                                const std::vector<SignatureFile>& files,
                                const std::vector<std::string>& guids,
                                const std::function<void(const std::string& line)>& report);

// Runs the scanner without signatures to find out whether it works. Throws Failure if it does not.
void evaluateNothing(LibraryHandle& library, const std::string& scanner);

}  // namespace zavcli
