#include "cli/terminal/Text.h"

#include <fmt/format.h>
#include <langinfo.h>
#include <wchar.h>

#include <algorithm>
#include <array>
#include <climits>
#include <clocale>
#include <iterator>

namespace zavcli {

namespace {

constexpr wchar_t kReplacement = L'\xfffd';

// The C library's conversions go beyond the last character of Unicode.
bool isUnicode(wchar_t character) {
    return static_cast<char32_t>(character) <= 0x10ffff;
}

// Marks, embeddings, overrides and isolates: text behind them would be shown in another order than it is
// written.
bool changesDirection(wchar_t character) {
    return character == 0x061c || character == 0x200e || character == 0x200f ||
           (character >= 0x202a && character <= 0x202e) || (character >= 0x2066 && character <= 0x2069);
}

// Characters that show nothing of themselves: text with them looks like text without.
bool isInvisible(wchar_t character) {
    struct Range {
        wchar_t first;
        wchar_t last;
    };
    constexpr std::array<Range, 16> kRanges{{{0x00ad, 0x00ad},
                                             {0x034f, 0x034f},
                                             {0x0600, 0x0605},
                                             {0x06dd, 0x06dd},
                                             {0x070f, 0x070f},
                                             {0x115f, 0x1160},
                                             {0x17b4, 0x17b5},
                                             {0x180b, 0x180f},
                                             {0x200b, 0x200d},
                                             {0x2028, 0x2029},
                                             {0x2060, 0x206f},
                                             {0x3164, 0x3164},
                                             {0xfeff, 0xfeff},
                                             {0xffa0, 0xffa0},
                                             {0xfff9, 0xfffb},
                                             {0xe0000, 0xe0fff}}};
    return std::any_of(kRanges.begin(), kRanges.end(), [character](const Range& range) {
        return character >= range.first && character <= range.last;
    });
}

std::string spelledOut(wchar_t character) {
    if (character == L'\n') return "\\n";
    if (character == L'\t') return "\\t";
    if (character == L'\r') return "\\r";
    if (character > 0xffff) return fmt::format("\\U{:08x}", static_cast<unsigned int>(character));
    return fmt::format("\\u{:04x}", static_cast<unsigned int>(character));
}

int columnsOf(std::wstring_view text) {
    int columns = 0;
    for (const wchar_t character : text) columns += std::max(0, wcwidth(character));
    return columns;
}

// How many leading characters fit into so many columns.
std::size_t fitting(std::wstring_view text, int columns) {
    std::size_t count = 0;
    for (; count < text.size(); ++count) {
        columns -= std::max(0, wcwidth(text[count]));
        if (columns < 0) break;
    }
    return count;
}

// Where a line of at most `count` characters ends: in front of a blank, behind a ';' that joins values, else
// at `count`. REQUIRES: the text is longer.
std::size_t lineEnd(std::wstring_view text, std::size_t count) {
    for (std::size_t end = count; end > 0; --end) {
        if (text[end] == L' ' || text[end - 1] == L';') return end;
    }
    return count;
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
        if (length > text.size() || !isUnicode(character)) {  // malformed or cut off
            character = kReplacement;
            length = 1;
        }
        wide += character;
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return wide;
}

std::wstring widenBytes(std::string_view path) {
    std::wstring wide;
    wide.reserve(path.size());
    for (const char byte : path) wide += static_cast<wchar_t>(static_cast<unsigned char>(byte));
    return wide;
}

std::string narrowBytes(std::wstring_view text) {
    std::string bytes;
    bytes.reserve(text.size());
    for (const wchar_t character : text) bytes += static_cast<char>(character & 0xff);
    return bytes;
}

std::string printable(std::string_view text) {
    std::string shown;
    for (const wchar_t character : fromUtf8(text)) {
        const bool control = character < 0x20 || (character >= 0x7f && character <= 0x9f);
        const bool harmless =
            !control && wcwidth(character) >= 0 && !changesDirection(character) && !isInvisible(character);
        shown += harmless ? toUtf8(std::wstring_view(&character, 1)) : spelledOut(character);
    }
    return shown;
}

std::string printableLines(std::string_view text) {
    std::string shown;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        shown += printable(text.substr(0, end)) + "\n";
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return shown;
}

int columnsOf(std::string_view text) {
    return columnsOf(fromUtf8(text));
}

std::string clip(std::string_view text, int columns) {
    const std::wstring wide = fromUtf8(text);
    if (columnsOf(wide) <= columns) return std::string(text);
    return toUtf8(std::wstring_view(wide).substr(0, fitting(wide, columns - 1))) + "…";
}

std::string pad(std::string_view text, int columns) {
    const int missing = std::max(0, columns - columnsOf(text));
    return std::string(text).append(static_cast<std::size_t>(missing), ' ');
}

std::vector<std::string> wrap(std::string_view text, int columns) {
    std::vector<std::string> lines;
    const std::wstring wide = fromUtf8(text);
    std::wstring_view rest = wide;
    while (columnsOf(rest) > columns) {
        const std::size_t count = std::max<std::size_t>(1, fitting(rest, columns));
        const std::size_t end = lineEnd(rest, count);
        lines.push_back(toUtf8(rest.substr(0, end)));
        rest.remove_prefix(end);
        if (rest.front() == L' ') rest.remove_prefix(1);
    }
    lines.push_back(toUtf8(rest));
    return lines;
}

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    for (char& byte : lower) {
        if (byte >= 'A' && byte <= 'Z') byte = static_cast<char>(byte - 'A' + 'a');
    }
    return lower;
}

}  // namespace zavcli
