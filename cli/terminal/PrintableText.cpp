#include "cli/terminal/PrintableText.h"

#include <fmt/format.h>
#include <wchar.h>

#include <algorithm>
#include <array>

#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

// Marks, embeddings, overrides and isolates, which display the following text in another order.
bool changesDirection(wchar_t character) {
    return character == 0x061c || character == 0x200e || character == 0x200f ||
           (character >= 0x202a && character <= 0x202e) || (character >= 0x2066 && character <= 0x2069);
}

// Characters without a visible form, which would make different texts look the same.
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

std::string escapeOf(wchar_t character) {
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

// The number of leading characters that fit into the columns.
std::size_t fittingCount(std::wstring_view text, int columns) {
    std::size_t count = 0;
    for (; count < text.size(); ++count) {
        columns -= std::max(0, wcwidth(text[count]));
        if (columns < 0) break;
    }
    return count;
}

// The length of a line of at most `count` characters: up to a blank, or up to and including a ';' that joins
// values, else `count`. REQUIRES: the text is longer.
std::size_t lineEnd(std::wstring_view text, std::size_t count) {
    for (std::size_t end = count; end > 0; --end) {
        if (text[end] == L' ' || text[end - 1] == L';') return end;
    }
    return count;
}

}  // namespace

std::string printable(std::string_view text) {
    std::string shown;
    for (const wchar_t character : fromUtf8(text)) {
        const bool control = character < 0x20 || (character >= 0x7f && character <= 0x9f);
        const bool harmless =
            !control && wcwidth(character) >= 0 && !changesDirection(character) && !isInvisible(character);
        shown += harmless ? toUtf8(std::wstring_view(&character, 1)) : escapeOf(character);
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
    return toUtf8(std::wstring_view(wide).substr(0, fittingCount(wide, columns - 1))) + "…";
}

std::string clipPath(std::string_view path, int columns) {
    const std::wstring wide = fromUtf8(path);
    if (columnsOf(wide) <= columns) return std::string(path);
    const int half = (columns - 1) / 2;
    std::size_t end = wide.size();
    for (int left = columns - 1 - half; end > 0; --end) {
        left -= std::max(0, wcwidth(wide[end - 1]));
        if (left < 0) break;
    }
    const std::wstring_view shown = wide;
    return toUtf8(shown.substr(0, fittingCount(wide, half))) + "…" + toUtf8(shown.substr(end));
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
        const std::size_t count = std::max<std::size_t>(1, fittingCount(rest, columns));
        const std::size_t end = lineEnd(rest, count);
        lines.push_back(toUtf8(rest.substr(0, end)));
        rest.remove_prefix(end);
        if (rest.front() == L' ') rest.remove_prefix(1);
    }
    lines.push_back(toUtf8(rest));
    return lines;
}

}  // namespace zavcli
