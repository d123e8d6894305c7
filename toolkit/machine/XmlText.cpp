#include "toolkit/machine/XmlText.h"

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

// Whether the eight bytes there can be copied as they are: looks at all of them at once.
constexpr std::size_t kBlock = 8;
bool isPlainBlock(const char* bytes) {
    constexpr std::uint64_t kOnes = 0x0101010101010101;
    constexpr std::uint64_t kHighBits = 0x80 * kOnes;
    std::uint64_t block = 0;
    std::memcpy(&block, bytes, kBlock);
    // Each has high bits that are set if, and only if, one of the bytes is such.
    const auto anyBelow = [](std::uint64_t word, std::uint64_t limit) {
        return (word - limit * kOnes) & ~word;
    };
    const auto anyIs = [&](std::uint64_t word, char c) {
        return anyBelow(word ^ static_cast<unsigned char>(c) * kOnes, 1);
    };
    const std::uint64_t control = anyBelow(block, 0x20);
    const std::uint64_t beyondAscii = (block + kOnes) | block;
    // One bit tells '"' from '&', and one '<' from '>'.
    const std::uint64_t quote = anyIs(block & ~(('"' ^ '&') * kOnes), '"');
    const std::uint64_t angle = anyIs(block & ~(('<' ^ '>') * kOnes), '<');
    return ((control | beyondAscii | quote | angle) & kHighBits) == 0;
}

// How many bytes at the front can be copied as they are.
std::size_t plainLength(std::string_view bytes) {
    std::size_t length = 0;
    while (bytes.size() - length >= kBlock && isPlainBlock(bytes.data() + length)) length += kBlock;
    const std::size_t left = bytes.size() - length;
    if (left < kBlock && length > 0 && isPlainBlock(bytes.data() + bytes.size() - kBlock))
        return bytes.size();
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

}  // namespace

void appendXmlText(std::string& xml, std::string_view bytes) {
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

}  // namespace toolkit
