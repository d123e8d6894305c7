#include "toolkit/quorvis/formats/Utf16.h"

#include <array>

#include "tessa/Utf8.h"

namespace toolkit::quorvis {

namespace {

bool isHigh(char16_t unit) {
    return (unit & 0xFC00U) == 0xD800U;
}

bool isLow(char16_t unit) {
    return (unit & 0xFC00U) == 0xDC00U;
}

}  // namespace

std::string utf8OfUtf16(std::u16string_view text) {
    std::string utf8;
    for (std::size_t i = 0; i < text.size(); ++i) {
        wchar_t codePoint = text[i];
        if (isHigh(text[i]) && i + 1 < text.size() && isLow(text[i + 1])) {
            codePoint = ((codePoint & 0x3FF) << 10) + (text[++i] & 0x3FF) + 0x10000;
        } else if (isHigh(text[i]) || isLow(text[i])) {
            codePoint = 0xFFFD;
        }
        std::array<char, 4> bytes;
        utf8.append(bytes.data(), tessa::narrowUtf8(codePoint, bytes.data()));
    }
    return utf8;
}

}  // namespace toolkit::quorvis
