#pragma once

#include <span>
#include <string_view>

#include "schema/Group.h"

namespace schema {

// Grows when a field is added or its form changes.
inline constexpr std::string_view kVersion = "2";

// All groups, in the order of their numbers.
std::span<const Group* const> allGroups();

// The group with this name or element name; null if there is none.
const Group* findGroup(std::string_view name);

// The field of a group with this name; null if there is none.
const Field* findField(const Group& group, std::string_view name);

}  // namespace schema
