#include "toolkit/machine/text/Utf8.h"

#include <array>
#include <cstdint>
#include <cstring>

#include "tessa/Utf8.h"
#include "toolkit/machine/text/ByteOrder.h"

namespace toolkit {
namespace {

// How many bytes at the front are ASCII.
std::size_t asciiLength(std::string_view bytes) {
    constexpr std::uint64_t kHighBits = 0x8080808080808080U;
    std::size_t length = 0;
    for (; length + sizeof(std::uint64_t) <= bytes.size(); length += sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + length, sizeof word);
        if ((word & kHighBits) != 0) break;
    }
    while (length < bytes.size() && static_cast<unsigned char>(bytes[length]) < 0x80) ++length;
    return length;
}

// The number of bytes of a character that begins with `lead`; 0 when no character begins with it.
std::size_t sequenceLength(unsigned char lead) {
    if (lead < 0x80) return 1;
    if (lead < 0xC2) return 0;
    if (lead < 0xE0) return 2;
    if (lead < 0xF0) return 3;
    return lead < 0xF5 ? 4 : 0;
}

bool isHigh(char16_t unit) {
    return (unit & 0xFC00U) == 0xD800U;
}

bool isLow(char16_t unit) {
    return (unit & 0xFC00U) == 0xDC00U;
}

}  // namespace

char32_t takeUtf8Character(std::string_view& bytes) {
    constexpr char32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const auto lead = static_cast<unsigned char>(bytes.front());
    const std::size_t length = sequenceLength(lead);
    if (length == 0 || length > bytes.size()) return kInvalidUtf8;
    char32_t character = length == 1 ? lead : lead & (0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const auto next = static_cast<unsigned char>(bytes[i]);
        if ((next & 0xC0U) != 0x80) return kInvalidUtf8;
        character = character << 6U | (next & 0x3FU);
    }
    const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < kSmallest[length] || character > 0x10FFFF || surrogate) return kInvalidUtf8;
    bytes.remove_prefix(length);
    return character;
}

bool isUtf8(std::string_view bytes) {
    for (;;) {
        bytes.remove_prefix(asciiLength(bytes));
        if (bytes.empty()) return true;
        if (takeUtf8Character(bytes) == kInvalidUtf8) return false;
    }
}

std::u16string utf16Units(std::string_view bytes) {
    std::u16string units;
    for (std::size_t at = 0; at + 2 <= bytes.size(); at += 2) {
        const auto unit = static_cast<char16_t>(littleEndian(bytes, at, 2));
        if (unit == 0) break;
        units += unit;
    }
    return units;
}

std::string utf8FromUtf16(std::u16string_view text, std::string_view replacement) {
    std::string utf8;
    for (std::size_t i = 0; i < text.size(); ++i) {
        wchar_t codePoint = text[i];
        if (isHigh(text[i]) && i + 1 < text.size() && isLow(text[i + 1])) {
            codePoint = ((codePoint & 0x3FF) << 10) + (text[++i] & 0x3FF) + 0x10000;
        } else if (isHigh(text[i]) || isLow(text[i])) {
            utf8 += replacement;
            continue;
        }
        std::array<char, 4> bytes;
        utf8.append(bytes.data(), tessa::narrowUtf8(codePoint, bytes.data()));
    }
    return utf8;
}

std::string utf8FromLatin1(std::string_view bytes) {
    std::string text;
    text.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x80) {
            text += c;
        } else {
            text += static_cast<char>(0xC0U | (byte >> 6U));
            text += static_cast<char>(0x80U | (byte & 0x3FU));
        }
    }
    return text;
}

}  // namespace toolkit
