#include "tessa/Shown.h"

#include <cstddef>

namespace tessa {

namespace {

constexpr std::size_t kLongestName = 200;

bool isPrintable(unsigned char byte) {
    return byte >= 0x20 && byte < 0x7F;
}

}  // namespace

std::string shown(std::string_view bytes) {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    for (const char each : bytes) {
        const auto byte = static_cast<unsigned char>(each);
        if (each == '\\') {
            text += "\\\\";
        } else if (isPrintable(byte)) {
            text += each;
        } else {
            text.append("\\x").append(1, digits[byte >> 4U]).append(1, digits[byte & 0xFU]);
        }
    }
    return text;
}

std::string quoted(std::string_view name) {
    const bool whole = name.size() <= kLongestName;
    return '"' + shown(name.substr(0, kLongestName)) + (whole ? "\"" : "...\"");
}

}  // namespace tessa
