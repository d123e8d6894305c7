// The hardware groups as people name them.
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

// A group with what the scanner can do about it.
struct ListedGroup {
    GroupName group;
    GroupStatus ability;  // Complete: it is gathered
};

// The group that is meant by `text`: its id, or its name in any case, with or without blanks ("operating
// system").
std::optional<GroupName> findGroup(const std::vector<GroupName>& groups, std::string_view text);

// Names that `text` may be a slip of the pen for, the nearest first, at most three.
std::vector<std::string> similarGroups(const std::vector<GroupName>& groups, std::string_view text);

// The groups named by `wanted`, each once, in that order; all groups when nothing is wanted.
// Throws Failure (bad usage) for a name that is no group.
std::vector<GroupName> chooseGroups(const std::vector<GroupName>& groups,
                                    const std::vector<std::string>& wanted);

}  // namespace zavcli
