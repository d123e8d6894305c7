// Text made safe for a terminal and laid out in its columns.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zavcli {

// The text with escapes such as \n, \u001b and \U000e0001 for control characters, invisible characters, and
// characters that change the direction of writing.
std::string printable(std::string_view text);

// The same for a text of several lines, which stay separate lines.
std::string printableLines(std::string_view text);

// The number of terminal columns that the text takes. REQUIRES: the text is printable.
int columnsOf(std::string_view text);

// The text cut to a number of columns, ending in an ellipsis if it was cut. REQUIRES: columns > 0.
std::string clip(std::string_view text, int columns);

// The same for a path: what is cut is its middle, so that the directory at its start and the name at its end stay.
std::string clipPath(std::string_view path, int columns);

// The text padded with blanks to a number of columns.
std::string pad(std::string_view text, int columns);

// The text in lines of at most that many columns, broken at blanks or after semicolons if possible.
// REQUIRES: columns > 1.
std::vector<std::string> wrap(std::string_view text, int columns);

}  // namespace zavcli
