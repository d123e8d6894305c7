#pragma once

#include <string_view>

namespace toolkit::quorvah {

// Whether a DMI text is one that board makers leave instead of a value: "To be filled by O.E.M.", blanks, a UUID that
// many machines share. Case-insensitive.
bool isPlaceholder(std::string_view text);

}  // namespace toolkit::quorvah
