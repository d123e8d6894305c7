// Software evaluations: reading their output, and looking up their results.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

const std::vector<Row>& softwareRows();

// Registers the works of the rows; their files go to `scratch`.
void addSoftware(const std::filesystem::path& scratch);

// Adds the figures that follow from measured ones.
void deriveSoftware(Medians& medians);

// Counts the instructions of the works that are counted.
void countSoftware(const std::filesystem::path& scratch, Medians& medians);

}  // namespace zavbench
