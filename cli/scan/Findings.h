#pragma once

#include <map>
#include <string>
#include <vector>

#include "cli/scan/Software.h"
#include "include/zav.h"

namespace zavcli {

// What the last evaluation of the context found: everything, or what has one of the identifiers, in their
// order and whatever their case. `names` are the readable names by identifier in lower case, for results that
// do not say theirs: those of a foreign scanner. Throws Failure.
std::vector<Finding> readFindings(ZAVSwCtx* software, const std::vector<std::string>& guids,
                                  const std::map<std::string, std::string>& names);

// How many results there are without a choice.
std::size_t countFindings(ZAVSwCtx* software);

// The warnings of the last evaluation.
std::vector<Warning> readWarnings(ZAVSwCtx* software);

}  // namespace zavcli
