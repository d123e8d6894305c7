#pragma once

#include <string>

namespace zavbench {

// Writes a hardware output file with `instances` software packages of 8 fields each, about 560 bytes per instance.
void writeOutputFile(const std::string& path, int instances);

// Writes a software output file with `results` matched signatures. Each has a distinct identifier, a Metadata element
// and `variables` variables (at most 10), with which a result takes about 500 bytes.
void writeSoftwareOutput(const std::string& path, int results, int variables);

// Writes a warnings file without warnings.
void writeEmptyWarnings(const std::string& path);

}  // namespace zavbench
