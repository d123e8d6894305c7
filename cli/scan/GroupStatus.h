// Whether the scanner read each group completely, as its own group ScanInfo reports.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/Field.h"

namespace zavcli {

enum class GroupState {
    Unknown,        // the scanner does not report it
    Complete,       // everything was read
    Partial,        // something is missing
    Unread,         // nothing could be read
    NotApplicable,  // this system, or the scanned directory, cannot have it
    Unsupported,    // the scanner does not implement it
};

struct GroupStatus {
    GroupState state = GroupState::Unknown;
    std::string reason;  // the scanner's code, such as "permission"; often empty
};

// "complete", "partial", "unread", "not-applicable", "unsupported" or "unknown".
std::string_view statusWord(GroupState state);

// The reason as text, such as "permission denied"; the code itself if it is not known.
std::string reasonText(std::string_view reason);

// Whether the fields of ScanInfo list the groups that the scanner does not gather.
bool reportsAbilities(const std::vector<Field>& scanInfo);

// The status of the group of this name, taken from the fields of ScanInfo. Unknown if there are no fields.
GroupStatus statusOf(std::string_view group, const std::vector<Field>& scanInfo);

}  // namespace zavcli
