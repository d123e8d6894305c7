#pragma once

#include <string_view>

namespace toolkit::quorvah {

// The name of a maker in JEDEC's list of manufacturers (JEP106): the number of the page, counted from 0, and the number on
// it without the parity bit. Empty if the maker is not known.
std::string_view jedecMaker(unsigned page, unsigned number);

}  // namespace toolkit::quorvah
