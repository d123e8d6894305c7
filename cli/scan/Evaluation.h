#pragma once

#include <string>
#include <vector>

#include "cli/scan/Library.h"
#include "cli/scan/ScannerLines.h"
#include "cli/scan/SignaturesFile.h"
#include "cli/scan/Software.h"

namespace zavcli {

// Evaluates the files with the scanner of that path, those that can be joined in one run. `lines` is the
// library's listener. Only results with one of the guids are kept, all when there is none.
// Prints what the scanner says of files that it refuses. Throws Failure when any evaluation fails.
SoftwareReport evaluateFiles(Library& library, ScannerLines& lines, const std::string& scanner,
                             const std::vector<SignaturesFile>& files, const std::vector<std::string>& guids);

// Evaluates no signature at all, to see whether the scanner works. Throws Failure.
void evaluateNothing(Library& library, const std::string& scanner);

}  // namespace zavcli
