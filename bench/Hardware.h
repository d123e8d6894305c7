// The hardware inventory: reading its output, running a scanner, and the bundled scanner.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

const std::vector<Row>& hardwareRows();

// Registers the works and programs of the rows. Their files go to `scratch`, and those that no disk is to slow down to
// `memory`.
void addHardware(const std::filesystem::path& scratch, const std::filesystem::path& memory);

// Counts the instructions of the works that are counted.
void countHardware(const std::filesystem::path& scratch, Medians& medians);

}  // namespace zavbench
