#pragma once

#include <string>
#include <string_view>

#include "schema/Group.h"

namespace schema {

// The value of a field as people read it: "274.9 GB", "16 GiB", "2.6 GHz", "1200 mV". Values without a unit, lists and values that
// do not have the form of the field are returned as they are.
std::string readableValue(const Field& field, std::string_view value);

}  // namespace schema
