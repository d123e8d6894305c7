// Reads the results and warnings of the last evaluation from a context of the library. All functions throw Failure.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "cli/scan/SoftwareInventory.h"
#include "include/zav.h"

namespace zavcli {

// The matched signatures: all of them, or those with one of the identifiers, in that order and
// case-insensitive. `names` holds names by identifier in lower case, for results that do not bring their own,
// such as those of other scanners.
std::vector<MatchedSignature> readMatches(ZAVSwCtx* software, const std::vector<std::string>& guids,
                                          const std::map<std::string, std::string>& names);

// The number of all matched signatures.
std::size_t countMatches(ZAVSwCtx* software);

std::vector<Warning> readWarnings(ZAVSwCtx* software);

}  // namespace zavcli
