// Benchmarks of the bundled hardware scanner with all groups, next to other inventory tools and on large machines.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

const std::vector<Row>& hardwarePeerRows();

// Registers the programs of the rows. `scratch` is the directory for their files, `memory` one in a file system in
// memory for the output.
void addHardwarePeers(const std::filesystem::path& scratch, const std::filesystem::path& memory);

// Computes the rows that follow from several programs, and counts the facts that each tool reports.
void deriveHardwarePeers(const std::filesystem::path& scratch, Medians& medians);

}  // namespace zavbench
