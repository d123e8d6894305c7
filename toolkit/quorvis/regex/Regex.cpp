#include "toolkit/quorvis/regex/Regex.h"

#include <re2/re2.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxPatternSize = std::size_t{4} << 10;
constexpr std::size_t kMaxPlainPatternSize = 256;
constexpr std::int64_t kMaxMemory = std::int64_t{8} << 20;
constexpr std::int64_t kMaxSetMemory = std::int64_t{64} << 20;
// The maximum number of instructions of a compiled expression. Each of them may be executed for every byte. A class of
// characters beyond ASCII has many instructions, of which few are executed.
constexpr int kMaxProgramSize = 5'000;
constexpr int kMaxUtf8ProgramSize = 12'000;

struct Compiled {
    std::unique_ptr<const RE2> regex;  // null when there is a problem
    std::string problem;
};

// The pattern with the flags in front in the syntax of RE2: "(?im)".
std::string withFlags(std::string_view pattern, std::string_view flags) {
    std::string text;
    for (const char flag : std::string_view("ims")) {
        if (flags.find(flag) != std::string_view::npos) text += flag;
    }
    if (!text.empty()) text = "(?" + text + ")";
    return text.append(pattern);
}

// Whether the expression contains characters or classes beyond ASCII and must be compiled for UTF-8. All others are
// compiled for Latin-1: this is faster, and any byte of the text can match.
bool needsCharacters(std::string_view pattern) {
    const auto beyondAscii = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
    if (std::ranges::any_of(pattern, beyondAscii)) return true;
    for (const std::string_view escape : {"\\p", "\\P", "\\x{"}) {
        if (pattern.find(escape) != std::string_view::npos) return true;
    }
    return false;
}

bool isTooComplex(const RE2& regex) {
    const int max =
        regex.options().encoding() == RE2::Options::EncodingUTF8 ? kMaxUtf8ProgramSize : kMaxProgramSize;
    // RE2 searches backwards as well, with a second program of about the same size.
    return regex.ProgramSize() > max || (regex.ProgramSize() > max / 4 && regex.ReverseProgramSize() > max);
}

std::unique_ptr<const RE2> compileAs(RE2::Options::Encoding encoding, const std::string& text) {
    RE2::Options options;
    options.set_encoding(encoding);
    options.set_max_mem(kMaxMemory);
    options.set_log_errors(false);
    return std::make_unique<const RE2>(text, options);
}

Compiled compileNew(const std::string& text, std::string_view pattern) {
    Compiled compiled;
    const bool characters = needsCharacters(pattern);
    compiled.regex = compileAs(characters ? RE2::Options::EncodingUTF8 : RE2::Options::EncodingLatin1, text);
    // The value of a variable, for example a file name, may be invalid UTF-8.
    if (compiled.regex->error_code() == RE2::ErrorBadUTF8)
        compiled.regex = compileAs(RE2::Options::EncodingLatin1, text);
    if (!compiled.regex->ok()) {
        compiled.problem = compiled.regex->error();
    } else if (compiled.regex->NumberOfCapturingGroups() > kMaxGroups) {
        compiled.problem = "more than 32 groups";
    } else if (isTooComplex(*compiled.regex)) {
        compiled.problem = "the expression is too complex: its repetitions make it too long";
    }
    if (!compiled.problem.empty()) compiled.regex.reset();
    return compiled;
}

// A problem that is found without compiling; empty when there is none.
std::string problemWith(std::string_view pattern, std::string_view flags) {
    if (pattern.size() > kMaxPatternSize) return "the expression is longer than 4 KiB";
    if (flags.find_first_not_of("ims") != std::string_view::npos) return "flags are letters of \"ims\"";
    return {};
}

std::mutex mutex;
std::unordered_map<std::string, Compiled> cache;

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool isAnyOf(std::string_view characters, char c) {
    return characters.find(c) != std::string_view::npos;
}

// Parses the subset of the grammar of RE2 that groupsOfPlainRegex() accepts.
class PlainRegexParser {
  public:
    explicit PlainRegexParser(std::string_view pattern) : rest_(pattern) {}

    std::optional<int> groups() {
        while (!rest_.empty()) {
            if (!takeOne()) return std::nullopt;
        }
        return open_ == 0 ? std::optional(groups_) : std::nullopt;
    }

  private:
    bool takeOne() {
        const char c = take();
        switch (c) {
            case '(':
                return takeOpening();
            case ')':
                repeatable_ = true;
                return open_-- > 0;
            case '[':
                repeatable_ = true;
                return takeClass();
            case '\\':
                repeatable_ = true;
                return takeEscape();
            case '^':
            case '$':
            case '|':
                repeatable_ = false;
                return true;
            case '*':
            case '+':
            case '?':
                return takeRepetition();
            default:
                repeatable_ = true;
                return c >= ' ' && c <= '~' && !isAnyOf("]{}", c);
        }
    }

    bool takeOpening() {
        ++open_;
        repeatable_ = false;
        if (rest_.starts_with("?:")) {
            rest_.remove_prefix(2);
        } else {
            ++groups_;
        }
        return !rest_.starts_with('?');
    }

    bool takeRepetition() {
        const bool allowed = repeatable_;
        repeatable_ = false;
        if (rest_.starts_with('?')) take();  // lazy
        return allowed;
    }

    bool takeEscape() { return !rest_.empty() && isAnyOf("dDsSwW.-+*?()[]{}^$|/\\\"'", take()); }

    // Takes single characters, ranges of letters or digits, and escapes.
    bool takeClass() {
        if (rest_.starts_with('^')) take();
        if (rest_.starts_with(']')) return false;
        while (!rest_.empty()) {
            const char c = take();
            if (c == ']') return true;
            const bool plain = isLetter(c) || isDigit(c);
            if (plain && rest_.starts_with('-')) {
                if (!takeRangeEnd(c)) return false;
            } else if (c == '\\') {
                if (!takeEscape() || rest_.starts_with('-')) return false;
            } else if (!plain && (!isAnyOf(" ._/,;=~+", c) || rest_.starts_with('-'))) {
                return false;
            }
        }
        return false;
    }

    bool takeRangeEnd(char first) {
        take();
        if (rest_.empty()) return false;
        const char last = take();
        const bool alike = (isDigit(first) && isDigit(last)) || (isLetter(first) && isLetter(last));
        return alike && first <= last && !rest_.starts_with('-');
    }

    char take() {
        const char c = rest_.front();
        rest_.remove_prefix(1);
        return c;
    }

    std::string_view rest_;
    int open_ = 0;
    int groups_ = 0;
    bool repeatable_ = false;
};

RE2::Options optionsFor(RE2::Options::Encoding encoding) {
    RE2::Options options;
    options.set_encoding(encoding);
    options.set_max_mem(kMaxSetMemory);
    options.set_log_errors(false);
    return options;
}

}  // namespace

void forgetRegexes() {
    const std::lock_guard lock(mutex);
    cache.clear();
}

const re2::RE2* compileRegex(std::string_view pattern, std::string_view flags, std::string& problem) {
    problem = problemWith(pattern, flags);
    if (!problem.empty()) return nullptr;
    std::string text = withFlags(pattern, flags);
    const std::lock_guard lock(mutex);
    auto found = cache.find(text);
    if (found == cache.end()) {
        Compiled compiled = compileNew(text, pattern);
        found = cache.emplace(std::move(text), std::move(compiled)).first;
    }
    problem = found->second.problem;
    return found->second.regex.get();
}

std::string quotedForRegex(std::string_view value) {
    return RE2::QuoteMeta({value.data(), value.size()});
}

std::optional<int> groupsOfPlainRegex(std::string_view pattern) {
    if (pattern.size() > kMaxPlainPatternSize) return std::nullopt;
    return PlainRegexParser(pattern).groups();
}

RegexSet::RegexSet(std::span<const std::string_view> patterns, re2::RE2::Options::Encoding encoding)
    : set_(optionsFor(encoding), re2::RE2::UNANCHORED) {
    for (const std::string_view pattern : patterns)
        ready_ = ready_ && set_.Add({pattern.data(), pattern.size()}, nullptr) >= 0;
    ready_ = ready_ && set_.Compile();
}

std::optional<std::vector<int>> RegexSet::matching(std::string_view text) const {
    if (!ready_) return std::nullopt;
    std::vector<int> hits;
    re2::RE2::Set::ErrorInfo error{re2::RE2::Set::kNoError};
    const bool any = set_.Match({text.data(), text.size()}, &hits, &error);
    if (!any && error.kind != re2::RE2::Set::kNoError) return std::nullopt;
    return hits;
}

}  // namespace toolkit::quorvis
