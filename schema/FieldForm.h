#pragma once

#include <string_view>

#include "schema/Group.h"

namespace schema {

// Whether a value of a field has the form of its type. An empty value has.
bool hasForm(const Field& field, std::string_view value);

// Whether it has this form after --sanitize, which replaces each value of a private field by 16 hexadecimal digits, and parts
// of a path.
bool hasSanitizedForm(const Field& field, std::string_view value);

}  // namespace schema
