// The catalogue as a document.
#pragma once

#include <span>
#include <string>
#include <string_view>

#include "schema/Group.h"

namespace schema {

// The words for properties in documents: "hardware-address", "serial", "root-only".
std::string_view wordOf(Type type);
std::string_view wordOf(Privacy privacy);
std::string_view wordOf(Access access);

// For people: each group with a line per field.
std::string fieldText(std::span<const Group* const> groups);

// {"schemaVersion": "2", "groups": [{"id": 5, "name": "Storage", ..., "fields": [{"name": "Size", "type": "count", ...}]}]}
std::string fieldJson(std::span<const Group* const> groups);

}  // namespace schema
