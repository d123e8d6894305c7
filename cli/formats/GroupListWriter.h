// Writes the list of groups: id, name and what the scanner can do with each.
#pragma once

#include <string>
#include <vector>

#include "cli/scan/GroupNames.h"
#include "schema/Group.h"

namespace zavcli {

// A table for people.
std::string groupTable(const std::vector<ListedGroup>& groups);

// {"groups": [{"id": 2, "name": "Processor", "status": "gathered"}, ...]}. The status is "gathered", "unsupported",
// "not-applicable", or "unknown" if the scanner does not report it.
std::string groupJson(const std::vector<ListedGroup>& groups);

// The columns id, name, status, with the same values for the status.
std::string groupCsv(const std::vector<ListedGroup>& groups);

// The fields of groups in the columns group, field, type, unit, list, key, volatile, access, privacy, meaning.
std::string fieldCsv(const std::vector<const schema::Group*>& groups);

}  // namespace zavcli
