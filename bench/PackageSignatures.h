#pragma once

#include <string>
#include <vector>

namespace zavbench {

// Names for so many package signatures: of every five, four are installed on this machine and one is not.
std::vector<std::string> packageNames(std::size_t count);

// Writes one signature for each name, true when the package is installed.
void writePackageSignatures(const std::string& path, const std::vector<std::string>& names);

// Writes the same questions as OVAL definitions of dpkginfo tests.
void writeOvalDefinitions(const std::string& path, const std::vector<std::string>& names);

}  // namespace zavbench
