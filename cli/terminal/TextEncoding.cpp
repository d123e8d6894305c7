#include "cli/terminal/TextEncoding.h"

#include <langinfo.h>
#include <wchar.h>

#include <algorithm>
#include <array>
#include <climits>
#include <clocale>

namespace zavcli {

namespace {

constexpr wchar_t kReplacement = L'\xfffd';

// The conversions of the C library accept values beyond the last Unicode character.
bool isUnicode(wchar_t character) {
    return static_cast<char32_t>(character) <= 0x10ffff;
}

}  // namespace

void useUtf8() {
    for (const char* const name : {"", "C.UTF-8", "en_US.UTF-8"}) {
        if (std::setlocale(LC_CTYPE, name) != nullptr && std::string_view(nl_langinfo(CODESET)) == "UTF-8")
            return;
    }
}

std::string toUtf8(std::wstring_view text) {
    std::string bytes;
    std::array<char, MB_LEN_MAX> encoded{};
    for (const wchar_t character : text) {
        mbstate_t state{};
        std::size_t length = wcrtomb(encoded.data(), isUnicode(character) ? character : kReplacement, &state);
        if (length == static_cast<std::size_t>(-1)) {
            state = {};
            length = wcrtomb(encoded.data(), kReplacement, &state);
        }
        if (length != static_cast<std::size_t>(-1)) bytes.append(encoded.data(), length);
    }
    return bytes;
}

std::wstring fromUtf8(std::string_view text) {
    std::wstring wide;
    while (!text.empty()) {
        mbstate_t state{};
        wchar_t character = 0;
        std::size_t length = mbrtowc(&character, text.data(), text.size(), &state);
        if (length > text.size() || !isUnicode(character)) {  // malformed or truncated
            character = kReplacement;
            length = 1;
        }
        wide += character;
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return wide;
}

std::wstring widenBytes(std::string_view bytes) {
    std::wstring wide;
    wide.reserve(bytes.size());
    for (const char byte : bytes) wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    return wide;
}

std::string narrowBytes(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const wchar_t character : text) bytes += static_cast<char>(character & 0xff);
    return bytes;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& byte : lower) {
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    }
    return lower;
}

}  // namespace zavcli
