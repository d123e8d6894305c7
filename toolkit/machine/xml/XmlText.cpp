#include "toolkit/machine/xml/XmlText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>

namespace toolkit {

namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;

// How many bytes a character takes whose first byte is `lead`; 0 for a byte that begins none.
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead < 0xF5 ? 4 : 0;
}

// The character at the front of `bytes`, which is taken away; kInvalid, and nothing taken, when it is not
// UTF-8 in its shortest form or a surrogate.
char32_t takeCharacter(std::string_view& bytes) {
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t length = sequenceLength(lead);
    if (length == 0 || length > bytes.size()) return kInvalid;
    char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(bytes[i]);
        if ((next & 0xC0U) != 0x80) return kInvalid;
        character = character << 6U | (next & 0x3FU);
    }
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < kSmallest[length] || character > 0x10FFFF || surrogate) return kInvalid;
    bytes.remove_prefix(length);
    return character;
}

bool isUtf8(std::string_view bytes) {
    while (!bytes.empty()) {
        if (takeCharacter(bytes) == kInvalid) return false;
    }
    return true;
}

// The bytes that can be copied as they are.
constexpr std::array<bool, 256> kPlain = [] {
    std::array<bool, 256> plain{};
    for (unsigned c = 0x20; c <= 0x7E; ++c) plain[c] = c != '&' && c != '<' && c != '>' && c != '"';
    return plain;
}();

// Bytes that are looked at all at once.
template <std::size_t kSize>
using Block [[gnu::vector_size(kSize)]] = unsigned char;

// Whether as many bytes as a block has can be copied as they are.
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

// The same of all bytes, of which there are as many as a block has or more.
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

// How many bytes at the front can be copied as they are.
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
    // A carriage return as itself would be read as a line feed.
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
        // What was taken so far is ASCII, so the rest tells what the whole is.
        const auto next = static_cast<unsigned char>(bytes.front());
        if (next >= 0x80 && !utf8) utf8 = isUtf8(bytes);
        if (next >= 0x80 && *utf8) {
            appendCharacter(xml, takeCharacter(bytes));
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

}  // namespace toolkit
