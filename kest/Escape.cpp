#include "kest/Escape.h"

namespace kest {

std::string escaped(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        if (each == '\\') {
            text += "\\\\";
        } else if (byte >= 0x20 && byte < 0x7F) {
            text += each;
        } else {
            text.append("\\x").append(1, digits[byte >> 4U]).append(1, digits[byte & 0xFU]);
        }
    }
    return text;
}

std::string quoted(std::string_view name) {
    const bool whole = name.size() <= kMaxQuotedBytes;
    return '"' + escaped(name.substr(0, kMaxQuotedBytes)) + (whole ? "\"" : "...\"");
}

}  // namespace kest
