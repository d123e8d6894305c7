#pragma once

#include <string_view>

#include "toolkit/machine/text/Checked.h"
#include "toolkit/quorvah/report/Group.h"

namespace toolkit::quorvah {

// Whether a value is unknown or has the form that the traits of its field promise.
inline bool hasForm(const FieldDef& field, std::string_view value) {
    if (value.empty()) return true;
    if ((field.traits & FieldDef::kCount) != 0) return readCount(value).has_value();
    if ((field.traits & FieldDef::kDecimal) == 0) return true;
    const std::size_t point = value.find('.');
    return point != std::string_view::npos && readCount(value.substr(0, point)) &&
           readCount(value.substr(point + 1));
}

}  // namespace toolkit::quorvah
