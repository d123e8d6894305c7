// Fields laid out as lines of name and value.
#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/Field.h"

namespace zavcli {

struct FieldLines {
    std::string text;
    bool cut = false;  // whether a value was cut to `linesPerValue`
};

// One line per field with the values aligned. Longer values are wrapped. REQUIRES: the values are printable.
FieldLines fieldLines(const std::vector<Field>& fields, std::string_view indent, int columns,
                      std::size_t linesPerValue = std::numeric_limits<std::size_t>::max());

}  // namespace zavcli
