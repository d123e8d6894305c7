#pragma once

#include <string_view>

namespace toolkit::quorvah {

// Whether a firmware text is one of those that makers of boards leave in place of a value: blanks only, "To
// be filled by O.E.M.", UUIDs that many machines share, and the like. Case does not matter.
bool isPlaceholder(std::string_view text);

}  // namespace toolkit::quorvah
