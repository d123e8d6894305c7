#include "toolkit/machine/xml/XmlText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

#include "toolkit/machine/text/Utf8.h"

namespace toolkit {

namespace {

// The bytes that need no escaping.
constexpr std::array<bool, 256> kPlain = [] {
    std::array<bool, 256> plain{};
    for (unsigned c = 0x20; c <= 0x7E; ++c) plain[c] = c != '&' && c != '<' && c != '>' && c != '"';
    return plain;
}();

// Bytes that are examined at once.
template <std::size_t kSize>
using Block [[gnu::vector_size(kSize)]] = unsigned char;

// Whether none of the bytes of a block needs escaping.
template <std::size_t kSize>
bool isPlainBlock(const char* bytes) {
    Block<kSize> block;
    std::memcpy(&block, bytes, kSize);
    const auto special =
        (block < 0x20) | (block > 0x7E) | (block == '&') | (block == '<') | (block == '>') | (block == '"');
    std::array<std::uint64_t, kSize / 8> words;
    std::memcpy(words.data(), &special, kSize);
    return std::ranges::all_of(words, [](std::uint64_t word) { return word == 0; });
}

// Whether none of the bytes needs escaping. REQUIRES: bytes.size() >= kSize.
template <std::size_t kSize>
bool arePlainBlocks(std::string_view bytes) {
    const char* const last = bytes.data() + bytes.size() - kSize;
    for (const char* block = bytes.data(); block < last; block += kSize) {
        if (!isPlainBlock<kSize>(block)) return false;
    }
    return isPlainBlock<kSize>(last);
}

bool isPlain(std::string_view bytes) {
    if (bytes.size() >= 16) return arePlainBlocks<16>(bytes);
    if (bytes.size() >= 8) return arePlainBlocks<8>(bytes);
    return std::ranges::all_of(bytes, [](char c) { return kPlain[static_cast<unsigned char>(c)]; });
}

// The number of bytes at the front that need no escaping.
std::size_t plainLength(std::string_view bytes) {
    std::size_t length = 0;
    while (bytes.size() - length >= 16 && isPlainBlock<16>(bytes.data() + length)) length += 16;
    while (length < bytes.size() && kPlain[static_cast<unsigned char>(bytes[length])]) ++length;
    return length;
}

void appendCharacter(std::string& xml, char32_t character) {
    switch (character) {
        case U'&':
            xml += "&amp;";
            return;
        case U'<':
            xml += "&lt;";
            return;
        case U'>':
            xml += "&gt;";
            return;
        case U'"':
            xml += "&quot;";
            return;
        case U'\t':
        case U'\n':
            xml += static_cast<char>(character);
            return;
        default:
            break;
    }
    // A parser would read a literal carriage return as a line feed.
    const bool forbidden =
        (character < 0x20 && character != U'\r') || character == 0xFFFE || character == 0xFFFF;
    if (forbidden) return;
    xml += "&#";
    xml += std::to_string(static_cast<std::uint32_t>(character));
    xml += ';';
}

void appendEscaped(std::string& xml, std::string_view bytes) {
    std::optional<bool> utf8;
    for (;;) {
        const std::size_t plain = plainLength(bytes);
        xml.append(bytes.data(), plain);
        bytes.remove_prefix(plain);
        if (bytes.empty()) return;
        // The bytes so far are ASCII, so the rest decides whether the whole is UTF-8.
        const auto next = static_cast<unsigned char>(bytes.front());
        if (next >= 0x80 && !utf8) utf8 = isUtf8(bytes);
        if (next >= 0x80 && *utf8) {
            appendCharacter(xml, takeUtf8Character(bytes));
        } else {
            appendCharacter(xml, next);
            bytes.remove_prefix(1);
        }
    }
}

}  // namespace

void appendXmlText(std::string& xml, std::string_view bytes) {
    if (isPlain(bytes)) {
        xml += bytes;
    } else {
        appendEscaped(xml, bytes);
    }
}

void appendXmlAttribute(std::string& xml, std::string_view name, std::string_view value) {
    xml.append(" ").append(name).append("=\"");
    const std::size_t start = xml.size();
    appendXmlText(xml, value);
    for (std::size_t at = xml.find_first_of("\t\n", start); at != std::string::npos;
         at = xml.find_first_of("\t\n", at)) {
        xml.replace(at, 1, xml[at] == '\t' ? "&#9;" : "&#10;");
    }
    xml += '"';
}

}  // namespace toolkit
