// Conversions between the wide text of the library, the bytes of paths, and the UTF-8 of this command.
#pragma once

#include <string>
#include <string_view>

namespace zavcli {

// Sets LC_CTYPE to the user's locale if its encoding is UTF-8, else to another UTF-8 locale.
// REQUIRES: called before any function that converts or measures UTF-8.
void useUtf8();

// Wide text as UTF-8. Values that are not Unicode characters become U+FFFD.
std::string toUtf8(std::wstring_view text);

// UTF-8 as wide text. Each byte that is not part of a character becomes U+FFFD.
std::wstring fromUtf8(std::string_view text);

// Bytes as wide text, one per character. The library takes paths in this form, which preserves every byte.
std::wstring widenBytes(std::string_view bytes);

// The bytes of a wide text that holds one byte per character, signed or unsigned.
std::string narrowBytes(std::wstring_view text);

// Converts ASCII letters to lower case, independent of the locale.
std::string lowerCase(std::string_view text);

}  // namespace zavcli
