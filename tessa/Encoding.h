// In which encoding a document is: what its first bytes show, and whether that goes with what it declares.
#pragma once

#include <array>
#include <string>
#include <string_view>

namespace tessa {

// How the characters of a document are laid out, as its first four bytes show it.
struct ByteForm {
    // `begin` holds the first four bytes of the file, or all that it has.
    static const ByteForm& of(std::string_view begin);

    // Whether a declared encoding may have bytes like these.
    bool fits(std::string_view encoding) const;

    // Expat reads only a few by itself.
    static bool readByExpat(std::string_view encoding);

    // Bytes of a document that Expat reads by itself as UTF-8; ISO-8859-1 does not show.
    std::string utf8Of(std::string_view bytes, bool isLatin1) const;

    std::string_view begin;
    std::array<std::string_view, 4> names;  // that may be declared; empty where most may
    const char* transcoded;  // what a Transcoder calls it; null where only the declared name tells
    int unit;                // bytes
    bool bigEndian;          // where a unit has more than one
    bool marked;             // with a byte order mark, so the encoding need not be declared
};

}  // namespace tessa
