#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tessa {

// Writes one wide character per code point to `out`, which must have room for `length` characters, and returns the end of
// the output. REQUIRES: valid UTF-8 without a NUL, as an XML parser delivers it.
wchar_t* widenUtf8(const char* utf8, std::size_t length, wchar_t* out);

// The same as a string. Throws std::bad_alloc.
std::wstring widened(std::string_view utf8);

// Writes a code point as UTF-8, at most four bytes, and returns the end of the output.
char* narrowUtf8(wchar_t codePoint, char* out);

}  // namespace tessa
