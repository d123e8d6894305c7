#pragma once

#include <string>

namespace toolkit::quorvah {

// The name of the maker of a memory module. Firmware often writes the code of JEDEC's list (JEP106) instead, in
// hexadecimal digits and in one of several forms: "80CE", "0x80CE000080CE", "7F98000000000000". Any other text, and a
// code that is not known, is returned as it is.
std::string memoryMaker(std::string text);

// The same for the bytes of the code: the number of the page, counted from 0, and the number on it with its parity bit.
// Empty if the code is not known.
std::string memoryMaker(unsigned page, unsigned code);

}  // namespace toolkit::quorvah
