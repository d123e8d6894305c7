#include "toolkit/quorvis/regex/Regex.h"

#include <re2/re2.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <unordered_map>

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kLongestPattern = std::size_t{4} << 10;
constexpr std::int64_t kMostMemory = std::int64_t{8} << 20;
// How many steps the compiled expression may have, each of which may be taken for every byte. Classes of characters
// beyond ASCII have many of which few are ever taken.
constexpr int kLargestProgram = 5'000;
constexpr int kLargestProgramOfCharacters = 12'000;

struct Compiled {
    std::unique_ptr<const RE2> regex;  // null when there is a problem
    std::string problem;
};

// What an expression is compiled from: the flags stand before it as RE2 writes them, "(?im)".
std::string withFlags(std::string_view pattern, std::string_view flags) {
    std::string text;
    for (const char flag : std::string_view("ims")) {
        if (flags.find(flag) != std::string_view::npos) text += flag;
    }
    if (!text.empty()) text = "(?" + text + ")";
    return text.append(pattern);
}

// Whether the expression speaks of characters beyond ASCII, and so of UTF-8. All others see bytes, one as
// good as another, which is faster too.
bool needsCharacters(std::string_view pattern) {
    const auto beyondAscii = [](char c) { return static_cast<unsigned char>(c) >= 0x80; };
    if (std::ranges::any_of(pattern, beyondAscii)) return true;
    for (const std::string_view escape : {"\\p", "\\P", "\\x{"}) {
        if (pattern.find(escape) != std::string_view::npos) return true;
    }
    return false;
}

bool isTooComplex(const RE2& regex) {
    const int most = regex.options().encoding() == RE2::Options::EncodingUTF8 ? kLargestProgramOfCharacters
                                                                              : kLargestProgram;
    // It is searched for backwards, too; that takes another program, of about the same size.
    return regex.ProgramSize() > most ||
           (regex.ProgramSize() > most / 4 && regex.ReverseProgramSize() > most);
}

std::unique_ptr<const RE2> compileAs(RE2::Options::Encoding encoding, const std::string& text) {
    RE2::Options options;
    options.set_encoding(encoding);
    options.set_max_mem(kMostMemory);
    options.set_log_errors(false);
    return std::make_unique<const RE2>(text, options);
}

Compiled compileNew(const std::string& text, std::string_view pattern) {
    Compiled compiled;
    const bool characters = needsCharacters(pattern);
    compiled.regex = compileAs(characters ? RE2::Options::EncodingUTF8 : RE2::Options::EncodingLatin1, text);
    // A file's name, say, need not be UTF-8.
    if (compiled.regex->error_code() == RE2::ErrorBadUTF8)
        compiled.regex = compileAs(RE2::Options::EncodingLatin1, text);
    if (!compiled.regex->ok()) {
        compiled.problem = compiled.regex->error();
    } else if (compiled.regex->NumberOfCapturingGroups() > kMostGroups) {
        compiled.problem = "more than 32 groups";
    } else if (isTooComplex(*compiled.regex)) {
        compiled.problem = "the expression is too complex: its repetitions make it too long";
    }
    if (!compiled.problem.empty()) compiled.regex.reset();
    return compiled;
}

// What is wrong with it, without compiling it; empty when nothing is.
std::string problemWith(std::string_view pattern, std::string_view flags) {
    if (pattern.size() > kLongestPattern) return "the expression is longer than 4 KiB";
    if (flags.find_first_not_of("ims") != std::string_view::npos) return "flags are letters of \"ims\"";
    return {};
}

std::mutex mutex;
std::unordered_map<std::string, Compiled> known;

}  // namespace

void forgetRegexes() {
    const std::lock_guard lock(mutex);
    known.clear();
}

const re2::RE2* compileRegex(std::string_view pattern, std::string_view flags, std::string& problem) {
    problem = problemWith(pattern, flags);
    if (!problem.empty()) return nullptr;
    std::string text = withFlags(pattern, flags);
    const std::lock_guard lock(mutex);
    auto found = known.find(text);
    if (found == known.end()) {
        Compiled compiled = compileNew(text, pattern);
        found = known.emplace(std::move(text), std::move(compiled)).first;
    }
    problem = found->second.problem;
    return found->second.regex.get();
}

std::string quotedForRegex(std::string_view value) {
    return RE2::QuoteMeta({value.data(), value.size()});
}

}  // namespace toolkit::quorvis
