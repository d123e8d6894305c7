// Benchmarks of software evaluations: reading their output and looking up their results.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

const std::vector<Row>& softwareRows();

// Registers the works of the rows. `scratch` is the directory for their files.
void addSoftware(const std::filesystem::path& scratch);

// Adds the figures that are computed from measured ones.
void deriveSoftware(Medians& medians);

// Counts instructions of the works for which rows report them.
void countSoftware(const std::filesystem::path& scratch, Medians& medians);

}  // namespace zavbench
