// The bundled signature scanner.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

const std::vector<Row>& signatureRows();

// Registers the programs of the rows; their files go to `scratch`.
void addSignatures(const std::filesystem::path& scratch);

// Adds the figures that follow from measured ones.
void deriveSignatures(Medians& medians);

}  // namespace zavbench
