#pragma once

#include <string>
#include <vector>

#include "cli/Groups.h"

namespace zavcli {

// The list of groups, id and name each: a table for people, {"groups": [{"id": 2, "name": "Processor"},
// ...]}, and CSV.
std::string groupTable(const std::vector<GroupName>& groups);
std::string groupJson(const std::vector<GroupName>& groups);
std::string groupCsv(const std::vector<GroupName>& groups);

}  // namespace zavcli
