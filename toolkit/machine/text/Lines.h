// Splits text into lines, words and fields without copying it.
#pragma once

#include <cstring>
#include <string_view>
#include <utility>
#include <vector>

namespace toolkit {

// Takes the next line from `text`, without its line end ("\n" or "\r\n"; the last line may lack it). False,
// with `line` emptied, when nothing is left.
inline bool nextLine(std::string_view& text, std::string_view& line) {
    if (text.empty()) {
        line = {};
        return false;
    }
    const void* const end = std::memchr(text.data(), '\n', text.size());
    const std::size_t length =
        end == nullptr ? text.size() : static_cast<std::size_t>(static_cast<const char*>(end) - text.data());
    line = text.substr(0, length);
    text.remove_prefix(end == nullptr ? length : length + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return true;
}

// The records of all lines for which `parse` returns true.
template <class Record>
std::vector<Record> parseLines(std::string_view text, bool (*parse)(std::string_view line, Record& record)) {
    std::vector<Record> records;
    std::string_view line;
    while (nextLine(text, line)) {
        Record record;
        if (parse(line, record)) records.push_back(std::move(record));
    }
    return records;
}

// Takes the next word from `line`. Words are separated by blanks or tabs. Empty when no word is left.
inline std::string_view nextWord(std::string_view& line) {
    const std::size_t begin = line.find_first_not_of(" \t");
    if (begin == std::string_view::npos) {
        line = {};
        return {};
    }
    const std::size_t end = line.find_first_of(" \t", begin);
    const std::string_view word = line.substr(begin, end - begin);
    line.remove_prefix(end == std::string_view::npos ? line.size() : end);
    return word;
}

// Takes the text before the next `separator` and the separator, or all of the text when there is no separator.
inline std::string_view takeField(std::string_view& text, char separator) {
    const std::size_t end = text.find(separator);
    const std::string_view field = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    return field;
}

// The text without blanks, tabs and line ends at both ends.
inline std::string_view trimmed(std::string_view text) {
    const auto isSpace = [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; };
    while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
    while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
    return text;
}

}  // namespace toolkit
