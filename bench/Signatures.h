// Benchmarks of the bundled signature scanner.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

const std::vector<Row>& signatureRows();

// Registers the programs of the rows. `scratch` is the directory for their files.
void addSignatures(const std::filesystem::path& scratch);

// Adds the figures that are computed from measured ones.
void deriveSignatures(Medians& medians);

}  // namespace zavbench
