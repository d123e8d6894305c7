// Benchmarks of the hardware inventory: reading its output, running a scanner, and the bundled scanner.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

const std::vector<Row>& hardwareRows();

// Registers the works and programs of the rows. `scratch` is the directory for their files, `memory` one in a file
// system in memory for files that no disk may slow down.
void addHardware(const std::filesystem::path& scratch, const std::filesystem::path& memory);

// Counts instructions of the works for which rows report them.
void countHardware(const std::filesystem::path& scratch, Medians& medians);

}  // namespace zavbench
