#pragma once

#include <optional>
#include <string_view>

namespace toolkit::quorvis {

// How many groups an expression has that is short and plain enough to be known as valid without compiling it, which
// takes a hundred times as long. None for all others, be they valid or not.
std::optional<int> groupsOfPlainRegex(std::string_view pattern);

}  // namespace toolkit::quorvis
