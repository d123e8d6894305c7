// The two conversions between wide and narrow text. They copy character by character and follow no locale:
// paths and option texts are 7-bit by agreement, and what is not comes back as it went.
#pragma once

#include <string>
#include <string_view>

namespace kest {

// Each character cut to its low 8 bits; as long as `wide`.
std::string narrow(std::wstring_view wide);

// Each byte widened as a signed character, so bytes from 0x80 become negative; as long as `bytes`.
std::wstring widen(std::string_view bytes);

}  // namespace kest
