// Determines the encoding of a document from its first bytes and the encoding that it declares.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace tessa {

// The size and byte order of a document's code units, as its first four bytes show them.
struct ByteLayout {
    // `begin` contains the first four bytes of the file, or all bytes of a shorter one.
    static const ByteLayout& of(std::string_view begin);

    // Whether a declared encoding is compatible with this form.
    bool fits(std::string_view encoding) const;

    // Whether Expat supports an encoding without a Transcoder.
    static bool readByExpat(std::string_view encoding);

    // Converts bytes of a document that Expat reads directly to UTF-8. The form does not tell ISO-8859-1 from UTF-8.
    std::string utf8Of(std::string_view bytes, bool isLatin1) const;

    std::string_view begin;
    std::array<std::string_view, 4> names;  // compatible encodings; empty for 8-bit units without a mark
    const char* transcoded;  // the name for a Transcoder; null if the declaration determines it
    int unit;                // bytes per code unit
    bool bigEndian;          // for units of several bytes
    bool marked;             // has a byte order mark, so the encoding need not be declared
};

}  // namespace tessa
