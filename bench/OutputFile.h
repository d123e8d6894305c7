#pragma once

#include <string>

namespace zavbench {

// Writes a hardware output file of software packages: `instances` of them with 8 fields each, some 560 bytes
// an instance.
void writeOutputFile(const std::string& path, int instances);

}  // namespace zavbench
