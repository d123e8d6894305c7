#include "toolkit/machine/text/Utf8.h"

#include <cstdint>
#include <cstring>

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

}  // namespace toolkit
