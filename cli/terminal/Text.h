// Text in three shapes: the library's wide text, the UTF-8 that the command writes, and the columns of a
// terminal.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zavcli {

// Makes the C library's conversions and character widths those of UTF-8: by the user's locale if that is one of UTF-8,
// else by one that is. All functions below but widenBytes
// rely on it.
void useUtf8();

// Wide text as UTF-8. What is no Unicode character becomes U+FFFD.
std::string toUtf8(std::wstring_view text);

// UTF-8 as wide text. Each byte that is not part of a character becomes U+FFFD.
std::wstring fromUtf8(std::string_view text);

// A path for the library, which cuts each wide character to its low 8 bits: every byte survives the round
// trip.
std::wstring widenBytes(std::string_view path);

// The bytes of a text in which the library keeps one byte, taken as a signed number, in each character.
std::string narrowBytes(std::wstring_view text);

// The text without anything that a terminal would obey or swallow: control characters, those that change the direction of
// writing and those that are not seen are spelt out as \n, \t, \u001b or \U000e0001.
std::string printable(std::string_view text);

// The same for a text of several lines.
std::string printableLines(std::string_view text);

// How many columns the text takes on a terminal. REQUIRES: the text is printable.
int columnsOf(std::string_view text);

// The text cut to so many columns, "…" in place of what is missing. REQUIRES: columns > 0.
std::string clip(std::string_view text, int columns);

// The text filled up with blanks to so many columns.
std::string pad(std::string_view text, int columns);

// The text in lines of at most so many columns, broken at blanks or behind ';' where
// possible. REQUIRES: columns > 1.
std::vector<std::string> wrap(std::string_view text, int columns);

// ASCII letters in lower case, independent of any locale.
std::string lowerCase(std::string_view text);

}  // namespace zavcli
