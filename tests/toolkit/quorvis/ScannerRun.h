// Runs the scanner as a process and reads its output files.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/toolkit/quorvis/ShippedTrees.h"

namespace quorvistest {

struct ScannerRun {
    std::multimap<std::string, FoundSoftware> found;  // by the guid of the signature
    // The codes of the events of this signature.
    std::vector<std::string> eventsOf(const std::string& guid) const;

    std::multimap<std::string, std::string> events;  // codes by guid
};

// Scans the machine itself if `root` is empty.
ScannerRun runScanner(const std::string& signatures, const std::string& root);

// Patterns may search the whole tree, as those of the catalogue do.
ScannerRun runScannerOnWholeTree(const std::string& signatures, const std::string& root);

}  // namespace quorvistest
