#pragma once

#include <string>

namespace zav {

// One hardware group: the id of the exported interface, the name in the scanner's configuration, the name in
// its output.
struct HWGroup {
    int id;
    const char* displayName;
    const wchar_t* xmlName;
};

// Ids run from kFirstGroup to kLastGroup with gaps at 17, 18 and 33; per-group arrays have kGroupSlots slots.
constexpr int kFirstGroup = 1;
constexpr int kLastGroup = 51;
constexpr int kGroupSlots = 52;

// The catalogue, in the order of the configuration file; ended by a row with null names.
extern const HWGroup HWGroups[];

// True for every id of the range, the gaps included.
constexpr bool isGroupId(int id) {
    return id >= kFirstGroup && id <= kLastGroup;
}

// The row behind `row`, null at the catalogue's end; the first row for null.
const HWGroup* nextGroup(const HWGroup* row);

// The id of the group with that output name (case counts), or -1.
int HW_getGroupId(std::wstring name);

// The row of an id, or null.
const HWGroup* findGroup(int id);

}  // namespace zav
