// Writes bills of materials.
#pragma once

#include <ctime>
#include <optional>
#include <string>

#include "cli/sbom/BillOfMaterials.h"

namespace zavcli {

// When a document was made.
struct DocumentTime {
    std::time_t time = 0;
    bool chosen = false;  // by the environment variable SOURCE_DATE_EPOCH; otherwise it is the current time
};

// The value of SOURCE_DATE_EPOCH, else the current time. Throws Failure (bad usage) if the value is not a number of
// seconds.
DocumentTime documentTime();

// CycloneDX 1.6 in JSON. It has a time only if that was chosen, so that equal bills give equal documents.
std::string cycloneDxText(const BillOfMaterials& bill, const DocumentTime& time);

// SPDX 2.3 in JSON. The format requires a time. Without it, equal bills give equal documents.
std::string spdxText(const BillOfMaterials& bill, const DocumentTime& time);

}  // namespace zavcli
