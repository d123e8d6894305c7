#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/Model.h"

namespace zavcli {

struct FieldLines {
    std::string text;
    bool cut = false;  // whether a value had more lines than it may
};

// Lines of name and value, the values below each other. REQUIRES: the values are printable.
FieldLines fieldLines(const std::vector<Field>& fields, std::string_view indent, int columns,
                      std::size_t linesPerValue = std::numeric_limits<std::size_t>::max());

}  // namespace zavcli
