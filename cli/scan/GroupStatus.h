// How the scanner fared with each group, as it tells in the group ScanInfo.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zavcli {

struct Field;

enum class GroupState {
    Unknown,        // the scanner does not tell
    Complete,       // what is not there does not exist
    Partial,        // there may be more
    Unread,         // nothing could be read
    NotApplicable,  // this system, or the scanned directory, has no such thing
    Unsupported,    // the scanner does not know how
};

struct GroupStatus {
    GroupState state = GroupState::Unknown;
    std::string reason;  // one word of the scanner's, such as "permission"; mostly empty
};

// "complete", "partial", "unread", "not-applicable", "unsupported" or "unknown".
std::string_view wordOf(GroupState state);

// The reason in words, such as "permission denied"; the scanner's own word where there are none.
std::string explained(std::string_view reason);

// Whether the scanner tells in these fields what it does not gather.
bool tellsOfAbilities(const std::vector<Field>& scanInfo);

// How it went with the group of this name, by the fields of the group ScanInfo; empty fields tell nothing.
GroupStatus statusOf(std::string_view group, const std::vector<Field>& scanInfo);

}  // namespace zavcli
