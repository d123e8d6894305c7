// What is known of the terminals behind standard output and standard error.
#pragma once

#include <string_view>

namespace zavcli {

// Whether the descriptor is a terminal on which the cursor can be moved: one that TERM does not call dumb.
bool isCapableTerminal(int descriptor);

// The columns to write for: those of the terminal, else those that COLUMNS names, else 100; never fewer
// than 40.
int columnsFor(int descriptor);

// Prints "zav: ", the text made safe for a terminal, and a line end to standard error.
void complain(std::string_view text) noexcept;

}  // namespace zavcli
