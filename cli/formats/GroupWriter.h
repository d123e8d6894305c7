#pragma once

#include <string>
#include <vector>

#include "cli/scan/Groups.h"

namespace zavcli {

// The list of groups, id, name and what the scanner can do about each: a table for people, {"groups": [{"id": 2, "name":
// "Processor", "status": "gathered"}, ...]}, and CSV with the columns id, name, status. The status is "gathered",
// "unsupported", "not-applicable", or "unknown" where the scanner does not tell.
std::string groupTable(const std::vector<ListedGroup>& groups);
std::string groupJson(const std::vector<ListedGroup>& groups);
std::string groupCsv(const std::vector<ListedGroup>& groups);

}  // namespace zavcli
