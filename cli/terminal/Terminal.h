// The terminals of standard output and standard error.
#pragma once

#include <string_view>

namespace zavcli {

// Whether the descriptor is a terminal with a movable cursor: TERM is set and not "dumb".
bool isCapableTerminal(int descriptor);

// The width to write for: that of the terminal, else the value of COLUMNS, else 100; at least 40.
int terminalColumns(int descriptor);

// Prints "zav: ", the text with escapes for unprintable characters, and a line feed to standard error.
void printMessage(std::string_view text) noexcept;

}  // namespace zavcli
