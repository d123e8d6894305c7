#pragma once

#include <cstddef>

namespace tessa {

// Writes one wide character per code point to `out` and returns its end; `out` has room for `length`
// characters. REQUIRES: valid UTF-8 without a NUL, as an XML parser hands it out.
wchar_t* widenUtf8(const char* utf8, std::size_t length, wchar_t* out);

// Writes a code point as UTF-8, four bytes at most, and returns its end.
char* narrowUtf8(wchar_t codePoint, char* out);

}  // namespace tessa
