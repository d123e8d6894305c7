// The hardware inventory: reading its output, running a scanner, and the bundled scanner.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

const std::vector<Row>& hardwareRows();

// Registers the works and programs of the rows; their files go to `scratch`.
void addHardware(const std::filesystem::path& scratch);

// Counts the instructions of the works that are counted.
void countHardware(const std::filesystem::path& scratch, Medians& medians);

}  // namespace zavbench
