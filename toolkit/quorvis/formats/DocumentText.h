#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace toolkit::quorvis {

// The bytes of an XML document. One that is not valid UTF-8 is read as ISO-8859-1.
struct DocumentText {
    std::string bytes;
    bool utf8 = true;
    std::string error;  // why the file cannot be read; empty when it can
};

constexpr std::size_t kLargestDocument = std::size_t{64} << 20;

// Reads a regular file, or what a pipe brings, of at most kLargestDocument bytes. UTF-16 and UTF-32 are errors.
DocumentText readDocument(const std::string& path);

// Counted from 1, in characters.
struct TextPlace {
    std::size_t line = 1;
    std::size_t column = 1;
};

TextPlace placeIn(const DocumentText& document, std::size_t offset);
// The same for who knows the line.
std::size_t columnIn(const DocumentText& document, std::size_t offset);

// ISO-8859-1 as UTF-8.
std::string utf8FromLatin1(std::string_view bytes);

}  // namespace toolkit::quorvis
