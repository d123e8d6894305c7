// The two conversions between wide and narrow text. They convert character by character, independent of any locale.
// Paths and option texts are 7-bit by convention; narrow(widen(bytes)) returns any bytes unchanged.
#pragma once

#include <string>
#include <string_view>

namespace kest {

// Each character is reduced to its low 8 bits. The result is as long as `wide`.
std::string narrow(std::wstring_view wide);

// Each byte is widened as a signed character: bytes from 0x80 become negative. The result is as long as `bytes`.
std::wstring widen(std::string_view bytes);

}  // namespace kest
