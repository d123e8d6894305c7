#include <algorithm>

#include "toolkit/quorvis/formats/Records.h"

// The library reports errors as values and parses from memory only.
#define TOML_EXCEPTIONS 0
#define TOML_ENABLE_FORMATTERS 0
#define TOML_MAX_NESTED_VALUES 64
#include <toml++/toml.h>

namespace toolkit::quorvis {

namespace {

// The library needs some 60 bytes of memory per byte of a document, and does not look at the clock.
constexpr std::size_t kMaxTomlSize = std::size_t{4} << 20;
constexpr std::size_t kMaxStepsPerKey = 64;

// Skips a string with its quotes, of which up to five may end a string of several lines. `at` is that of the first quote.
std::size_t endOfString(std::string_view text, std::size_t at) {
    const char quote = text[at];
    const std::string triple(3, quote);
    const bool manyLines = text.substr(at).starts_with(triple);
    const std::string_view end = manyLines ? std::string_view(triple) : std::string_view(triple).substr(0, 1);
    at += end.size();
    while (at < text.size() && !text.substr(at).starts_with(end)) {
        if (!manyLines && text[at] == '\n') return at;
        at += quote == '"' && text[at] == '\\' ? 2 : 1;
    }
    at = std::min(at + end.size(), text.size());
    for (int more = 0; manyLines && more < 2 && at < text.size() && text[at] == quote; ++more) ++at;
    return at;
}

// What must not reach the library.
struct Hazards {
    // A key has so many steps that the tables would be nested too deeply: the library frees them by recursion.
    bool longKey = false;
    // The place of a character beyond ASCII outside of strings and comments, where TOML has none. The behaviour of the
    // library is undefined for some of them.
    std::size_t stray = std::string_view::npos;
    // The place of a character with which no name of a table begins. The behaviour of the library is undefined for it.
    std::size_t table = std::string_view::npos;
};

// Where the name of a table should begin, behind the brackets at `at`. The end of the text if it may begin there.
std::size_t wrongTableName(std::string_view text, std::size_t at) {
    constexpr std::string_view kBlanks = " \t";
    at = text.find_first_not_of(kBlanks, at + 1);
    if (at != std::string_view::npos && text[at] == '[') at = text.find_first_not_of(kBlanks, at + 1);
    if (at == std::string_view::npos) return text.size();
    const char c = text[at];
    const bool allowed = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                         std::string_view("-_\"'").find(c) != std::string_view::npos;
    return allowed ? text.size() : at;
}

Hazards hazardsOf(std::string_view text) {
    constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
    Hazards hazards;
    // Dots outside of strings and comments are in keys and numbers.
    std::size_t dots = 0;
    bool lineBegins = true;
    int depth = 0;  // of brackets and braces
    for (std::size_t at = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0; at < text.size();) {
        const char c = text[at];
        if (c == '[' && lineBegins && depth == 0) {
            const std::size_t wrong = wrongTableName(text, at);
            if (wrong < text.size()) hazards.table = std::min(hazards.table, wrong);
        }
        lineBegins = c == '\n' || (lineBegins && (c == ' ' || c == '\t'));
        if (c == '"' || c == '\'') {
            at = endOfString(text, at);
            continue;
        }
        if (c == '#') {
            at = std::min(text.find('\n', at), text.size());
            continue;
        }
        if ((static_cast<unsigned char>(c) & 0x80U) != 0) hazards.stray = std::min(hazards.stray, at);
        if (c == '[' || c == '{') ++depth;
        if (c == ']' || c == '}') --depth;
        if (c == '.') ++dots;
        if (c == '\n' || c == '=' || c == ',' || c == '{' || c == '[') dots = 0;
        if (dots >= kMaxStepsPerKey) hazards.longKey = true;
        ++at;
    }
    return hazards;
}

// The texts of values by their place in the document.
class Source {
  public:
    explicit Source(std::string_view text) : text_(text) {
        starts_.push_back(0);
        for (std::size_t at = text.find('\n'); at != std::string_view::npos; at = text.find('\n', at + 1))
            starts_.push_back(at + 1);
    }

    std::string_view textOf(const toml::source_region& region) const {
        const std::size_t begin = offsetOf(region.begin);
        return text_.substr(begin, std::max(begin, offsetOf(region.end)) - begin);
    }

  private:
    // Columns count characters.
    std::size_t offsetOf(const toml::source_position& place) const {
        if (place.line == 0 || place.line > starts_.size()) return text_.size();
        std::size_t at = starts_[place.line - 1];
        for (std::size_t column = 1; column < place.column && at < text_.size(); ++column) {
            ++at;
            while (at < text_.size() && (static_cast<unsigned char>(text_[at]) & 0xC0U) == 0x80U) ++at;
        }
        return at;
    }

    std::string_view text_;
    std::vector<std::size_t> starts_;  // of lines
};

class Walk {
  public:
    Walk(std::string_view text, const RecordRequest& request, const ProgressCheck& checkProgress)
        : source_(text), collector_(request, checkProgress) {}

    Records read(const toml::table& root) {
        pass(root);
        return collector_.takeRecords();
    }

  private:
    // False if the document is nested too deeply. The depth of the recursion is limited by the collector.
    bool pass(const toml::node& node) {
        if (const toml::table* const table = node.as_table()) return passTable(*table);
        if (const toml::array* const array = node.as_array()) return passArray(*array);
        if (!collector_.wantsNext()) {
            collector_.scalar(std::nullopt);
        } else if (const auto* const text = node.as_string()) {
            collector_.scalar(text->get());
        } else {
            collector_.scalar(source_.textOf(node.source()));
        }
        return true;
    }

    bool passTable(const toml::table& table) {
        if (!collector_.open(false)) return false;
        for (const auto& [name, value] : table) {
            collector_.key(std::string_view(name));
            if (!pass(value)) return false;
        }
        collector_.close();
        return true;
    }

    bool passArray(const toml::array& array) {
        if (!collector_.open(true)) return false;
        for (const toml::node& value : array) {
            if (!pass(value)) return false;
        }
        collector_.close();
        return true;
    }

    Source source_;
    RecordCollector collector_;
};

Records problem(std::string text, bool tooLarge) {
    Records records;
    records.tooLarge = tooLarge;
    records.problem = std::move(text);
    return records;
}

}  // namespace

Records readTomlRecords(std::string_view text, const RecordRequest& request,
                        const ProgressCheck& checkProgress) {
    if (text.size() > kMaxTomlSize)
        return problem("the TOML document is larger than " + std::to_string(kMaxTomlSize) + " bytes", true);
    const Hazards hazards = hazardsOf(text);
    if (hazards.longKey)
        return problem("a key has more than " + std::to_string(kMaxStepsPerKey) + " steps", true);
    const std::size_t wrong = std::min(hazards.stray, hazards.table);
    if (wrong != std::string_view::npos) {
        const auto line = std::ranges::count(text.substr(0, wrong), '\n') + 1;
        const std::string_view what =
            wrong == hazards.stray ? "a character beyond ASCII" : "no name of a table";
        return problem("damaged TOML, line " + std::to_string(line) + ": " + std::string(what), false);
    }
    const toml::parse_result result = toml::parse(text);
    if (!result) {
        const toml::source_position& place = result.error().source().begin;
        return problem(
            "damaged TOML, line " + std::to_string(place.line) + ", column " + std::to_string(place.column),
            false);
    }
    return Walk(text, request, checkProgress).read(result.table());
}

}  // namespace toolkit::quorvis
