#pragma once

#include <string>

namespace zavbench {

// Writes a hardware output file of software packages: `instances` of them with 8 fields each, some 560 bytes
// an instance.
void writeOutputFile(const std::string& path, int instances);

// Writes a software output file: `results` matched signatures of distinct identifiers with a Metadata element and
// `variables` (at most 10) variables each; with all of them some 500 bytes a result.
void writeSoftwareOutput(const std::string& path, int results, int variables);

// Writes a warnings file without a warning.
void writeEmptyWarnings(const std::string& path);

}  // namespace zavbench
