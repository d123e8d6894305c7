// Scans with the shipped signatures.
#pragma once

#include <filesystem>
#include <vector>

#include "bench/Table.h"

namespace zavbench {

const std::vector<Row>& catalogueRows();

// Creates the tree and registers the scans.
void addCatalogue(const std::filesystem::path& scratch);

// What is measured once: bytes read and memory in that tree, and `zav sw` on this machine.
void observeCatalogue(const std::filesystem::path& scratch, Medians& medians);

}  // namespace zavbench
