#pragma once

#include <string>

namespace zav {

// A hardware group.
struct HWGroup {
    int id;                   // in the exported interface
    const char* displayName;  // in the scanner's configuration
    const wchar_t* xmlName;   // in the scanner's output
};

// Ids run from kFirstGroup to kLastGroup; 17, 18 and 33 are unused. Arrays indexed by id have kGroupSlots elements.
constexpr int kFirstGroup = 1;
constexpr int kLastGroup = 51;
constexpr int kGroupSlots = 52;

// All groups in the order of the configuration file. A row with null names ends the table.
extern const HWGroup HWGroups[];

// True for every id of the range, including the unused ones.
constexpr bool isGroupId(int id) {
    return id >= kFirstGroup && id <= kLastGroup;
}

// The row after `row`, or the first row for null. Null at the end of the table.
const HWGroup* nextGroup(const HWGroup* row);

// The id of the group with this name in the output, or -1. Case-sensitive.
int HW_getGroupId(std::wstring name);

// The row of a group, or null if no group has this id.
const HWGroup* findGroup(int id);

}  // namespace zav
