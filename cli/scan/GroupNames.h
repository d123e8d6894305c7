// Finds hardware groups by the names that users type.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/GroupStatus.h"

namespace zavcli {

struct GroupName {
    int id = 0;
    std::string name;
};

// A group and what the scanner can do with it.
struct ListedGroup {
    GroupName group;
    GroupStatus ability;  // Complete if the scanner gathers it
};

// The group that the text denotes by its id or by its name. Names are case-insensitive, and blanks, '-' and '_' are
// ignored.
std::optional<GroupName> findGroup(const std::vector<GroupName>& groups, std::string_view text);

// Up to three group names that are similar to the text, the most similar first.
std::vector<std::string> similarGroups(const std::vector<GroupName>& groups, std::string_view text);

// The wanted groups in the given order, without repetitions; all groups if none is wanted.
// Throws Failure (bad usage) for an unknown group.
std::vector<GroupName> chooseGroups(const std::vector<GroupName>& groups,
                                    const std::vector<std::string>& wanted);

}  // namespace zavcli
