#pragma once

#include <string>

#include "cli/formats/TableWriter.h"
#include "cli/scan/Software.h"

namespace zavcli {

// The software for people: a paragraph per result, headed by its name and version, and a line that sums up.
std::string tableText(const SoftwareReport& report, const TableStyle& style);

}  // namespace zavcli
