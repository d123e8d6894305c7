#pragma once

#include <string>
#include <vector>

namespace zavbench {

// Names for this number of package signatures. Of every five, four are installed on this machine.
std::vector<std::string> packageNames(std::size_t count);

// Writes one signature for each name, which matches if the package is installed.
void writePackageSignatures(const std::string& path, const std::vector<std::string>& names);

// Writes equivalent OVAL definitions with dpkginfo tests.
void writeOvalDefinitions(const std::string& path, const std::vector<std::string>& names);

}  // namespace zavbench
