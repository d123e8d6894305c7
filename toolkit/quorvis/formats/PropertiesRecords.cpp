#include "toolkit/quorvis/formats/Records.h"

#include <charconv>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/machine/text/Utf8.h"

namespace toolkit::quorvis {

namespace {

constexpr std::string_view kJavaBlanks = " \t\f";

std::string_view withoutBlanksBefore(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(kJavaBlanks);
    return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

bool endsInBackslash(std::string_view line) {
    const std::size_t last = line.find_last_not_of('\\');
    const std::size_t count = line.size() - (last == std::string_view::npos ? 0 : last + 1);
    return count % 2 == 1;
}

// Takes the next line with its continuation lines. False at the end.
bool nextJavaLine(std::string_view& text, std::string& whole) {
    whole.clear();
    std::string_view line;
    while (nextLine(text, line)) {
        line = withoutBlanksBefore(line);
        if (whole.empty() && (line.empty() || line.front() == '#' || line.front() == '!')) continue;
        const bool continued = endsInBackslash(line);
        if (continued) line.remove_suffix(1);
        whole.append(line);
        if (!continued) return true;
    }
    return !whole.empty();
}

// Parses the four digits of "\uXXXX".
std::optional<char16_t> javaCharacter(std::string_view text) {
    unsigned unit = 0;
    const std::string_view digits = text.substr(0, 4);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), unit, 16);
    if (digits.size() < 4 || error != std::errc() || end != digits.data() + 4) return std::nullopt;
    return static_cast<char16_t>(unit);
}

char javaEscape(char c) {
    switch (c) {
        case 't':
            return '\t';
        case 'n':
            return '\n';
        case 'r':
            return '\r';
        case 'f':
            return '\f';
        default:
            return c;
    }
}

// Resolves all escapes. Consecutive escapes are converted together, because two of them may form a surrogate pair.
std::string unescaped(std::string_view text) {
    std::string plain;
    std::u16string units;
    const auto flush = [&plain, &units] {
        plain += utf8FromUtf16(units);
        units.clear();
    };
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escaped = text[i] == '\\' && i + 1 < text.size();
        if (escaped) ++i;
        const std::optional<char16_t> unit =
            escaped && text[i] == 'u' ? javaCharacter(text.substr(i + 1)) : std::nullopt;
        if (unit) {
            units += *unit;
            i += 4;
            continue;
        }
        flush();
        plain += escaped ? javaEscape(text[i]) : text[i];
    }
    flush();
    return plain;
}

// Takes the key from a line. The value remains.
std::string_view takeJavaKey(std::string_view& line) {
    std::size_t end = 0;
    while (end < line.size() && line[end] != '=' && line[end] != ':' &&
           kJavaBlanks.find(line[end]) == std::string_view::npos)
        end += line[end] == '\\' ? 2 : 1;
    const std::string_view key = line.substr(0, end);
    line = withoutBlanksBefore(line.substr(key.size()));
    if (!line.empty() && (line.front() == '=' || line.front() == ':'))
        line = withoutBlanksBefore(line.substr(1));
    return key;
}

}  // namespace

Records readPropertiesRecords(std::string_view text, const RecordRequest& request,
                              const ProgressCheck& checkProgress) {
    RecordCollector collector(request, checkProgress);
    collector.open(false);
    for (std::string line; nextJavaLine(text, line);) {
        std::string_view rest = line;
        collector.key(unescaped(takeJavaKey(rest)));
        collector.scalar(collector.wantsNext() ? unescaped(rest) : std::string());
    }
    collector.close();
    return collector.takeRecords();
}

std::optional<std::string> propertyValue(std::string_view text, std::string_view key,
                                         const ProgressCheck& checkProgress) {
    RecordRequest request;
    request.keys = {{{{std::string(key), false}}, false, true}};
    request.limit = 1;
    Records found = readPropertiesRecords(text, request, checkProgress);
    if (found.records.empty()) return std::nullopt;
    return std::move(found.records.front().items.front());
}

}  // namespace toolkit::quorvis
