#include "toolkit/quorvis/walk/GlobPattern.h"

#include <algorithm>
#include <utility>

#include "toolkit/machine/text/Lines.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxPatternSize = 4096;
constexpr std::size_t kMaxAlternatives = 64;
constexpr int kMaxBraceDepth = 16;

// The length of the set of characters at the start of `text`, "[a-z]" or "[]a]"; 1 when it is not closed.
std::size_t lengthOfSet(std::string_view text) {
    std::size_t end = text.substr(0, 2) == "[!" ? 2 : 1;
    if (end < text.size() && text[end] == ']') ++end;
    for (; end < text.size(); ++end) {
        if (text[end] == '\\')
            ++end;
        else if (text[end] == ']')
            return end + 1;
    }
    return 1;
}

class BraceExpansion {
  public:
    explicit BraceExpansion(std::string_view pattern) : rest_(pattern) {}

    std::vector<std::string> all() {
        std::vector<std::string> texts = sequence(0);
        if (problem_.empty() && !rest_.empty()) problem_ = "a \"}\" closes nothing";
        return texts;
    }
    std::string takeProblem() { return std::move(problem_); }

  private:
    // Expands up to the end; inside of braces up to "," or "}".
    std::vector<std::string> sequence(int depth) {
        std::vector<std::string> texts(1);
        while (problem_.empty() && !rest_.empty()) {
            const char next = rest_.front();
            if (next == '}' || (next == ',' && depth > 0)) break;
            if (next == '{') {
                appendEach(texts, group(depth + 1));
                continue;
            }
            const std::size_t length = lengthOfPlain(next);
            for (std::string& text : texts) text.append(rest_.substr(0, length));
            rest_.remove_prefix(std::min(length, rest_.size()));
        }
        return texts;
    }

    // The length of the text at the start of the rest that is copied as it is.
    std::size_t lengthOfPlain(char next) const {
        if (next == '[') return lengthOfSet(rest_);
        if (next == '\\') return 2;
        return std::max<std::size_t>(1, std::min(rest_.find_first_of("\\[{},"), rest_.size()));
    }

    std::vector<std::string> group(int depth) {
        std::vector<std::string> texts;
        if (depth > kMaxBraceDepth) problem_ = "braces stand inside of each other too often";
        do {
            rest_.remove_prefix(1);
            for (std::string& text : sequence(depth)) texts.push_back(std::move(text));
            if (texts.size() > kMaxAlternatives) problem_ = tooMany();
        } while (problem_.empty() && !rest_.empty() && rest_.front() == ',');
        if (problem_.empty() && rest_.empty()) problem_ = "a \"{\" is not closed";
        if (problem_.empty()) rest_.remove_prefix(1);
        return texts;
    }

    void appendEach(std::vector<std::string>& texts, const std::vector<std::string>& endings) {
        if (texts.size() * endings.size() > kMaxAlternatives) problem_ = tooMany();
        if (!problem_.empty()) return;
        std::vector<std::string> longer;
        for (const std::string& text : texts) {
            for (const std::string& ending : endings) longer.push_back(text + ending);
        }
        texts = std::move(longer);
    }

    static std::string tooMany() {
        return "the braces stand for more than " + std::to_string(kMaxAlternatives) + " texts";
    }

    std::string_view rest_;
    std::string problem_;
};

// The texts that a pattern with braces stands for. Escapes and sets of characters stay as they are. Empty, with the reason
// in `problem`, when the braces do not match or stand for too many texts.
std::vector<std::string> expandBraces(std::string_view pattern, std::string& problem) {
    if (pattern.find('{') == std::string_view::npos && pattern.find('}') == std::string_view::npos)
        return {std::string(pattern)};
    BraceExpansion expansion(pattern);
    std::vector<std::string> texts = expansion.all();
    problem = expansion.takeProblem();
    if (!problem.empty()) texts.clear();
    return texts;
}

// Removes the next name from a pattern without braces. A slash after a backslash does not end the name.
std::string_view takeName(std::string_view& pattern) {
    std::size_t end = 0;
    while (end < pattern.size() && pattern[end] != '/') end += pattern[end] == '\\' ? 2 : 1;
    end = std::min(end, pattern.size());
    const std::string_view name = pattern.substr(0, end);
    pattern.remove_prefix(std::min(end + 1, pattern.size()));
    return name;
}

// Whether no character of the name is special.
bool isPlain(std::string_view name) {
    const auto special = [](char c) { return c == '*' || c == '?' || c == '[' || c == '\\'; };
    return std::ranges::none_of(name, special);
}

bool hasWildcards(std::string_view name) {
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == '\\')
            ++i;
        else if (name[i] == '*' || name[i] == '?' || name[i] == '[')
            return true;
    }
    return false;
}

std::string withoutEscapes(std::string_view name) {
    std::string text;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == '\\' && i + 1 < name.size()) ++i;
        text.push_back(name[i]);
    }
    return text;
}

// What is wrong with the set of characters at `start`. `end` becomes the place of its "]".
std::optional<std::string> problemOfSet(std::string_view name, std::size_t start, std::size_t& end) {
    std::size_t i = start + 1;
    if (i < name.size() && name[i] == '!') ++i;
    const std::size_t first = i;
    for (; i < name.size() && (name[i] != ']' || i == first); ++i) {
        if (name[i] == '\\') ++i;
        if (i < name.size() && static_cast<unsigned char>(name[i]) >= 128)
            return "a set of characters holds one that is not ASCII";
    }
    if (i >= name.size()) return "a \"[\" is not closed";
    end = i;
    return std::nullopt;
}

std::optional<std::string> problemOfName(std::string_view name) {
    if (name == "**") return std::nullopt;
    if (name == "." || name == "..") return "\".\" and \"..\" match nothing";
    if (isPlain(name)) return std::nullopt;
    for (std::size_t i = 0; i < name.size(); ++i) {
        if (name[i] == '\\') {
            if (++i == name.size()) return "a backslash stands before nothing";
            continue;
        }
        if (name.substr(i, 2) == "**") return "\"**\" must be a whole name";
        std::size_t end = i;
        if (name[i] == '[') {
            if (std::optional<std::string> problem = problemOfSet(name, i, end)) return problem;
        }
        i = end;
    }
    if (name.find('\\') == std::string_view::npos) return std::nullopt;
    const std::string plain = withoutEscapes(name);
    if (plain == "." || plain == ".." || plain.find('/') != std::string::npos)
        return "a name cannot be \"" + plain + "\"";
    return std::nullopt;
}

GlobStep stepOf(std::string_view name) {
    if (name == "**") return {GlobStep::Kind::AnyDepth, {}};
    if (isPlain(name)) return {GlobStep::Kind::Literal, std::string(name)};
    if (hasWildcards(name)) return {GlobStep::Kind::Wildcard, std::string(name)};
    return {GlobStep::Kind::Literal, withoutEscapes(name)};
}

std::optional<std::string> parseAlternative(std::string_view pattern, GlobSteps& steps) {
    if (pattern.empty() || pattern.front() != '/') return "it does not begin with a slash";
    while (!pattern.empty()) {
        const std::string_view name = takeName(pattern);
        if (name.empty()) continue;
        if (std::optional<std::string> problem = problemOfName(name)) return problem;
        const bool again = name == "**" && !steps.empty() && steps.back().kind == GlobStep::Kind::AnyDepth;
        if (!again) steps.push_back(stepOf(name));
    }
    if (steps.empty()) return "it names nothing";
    if (steps.back().kind == GlobStep::Kind::AnyDepth) steps.push_back({GlobStep::Kind::Wildcard, "*"});
    return std::nullopt;
}

// The number of bytes of the UTF-8 character at `position`.
std::size_t lengthOfCharacter(std::string_view name, std::size_t position) {
    std::size_t end = position + 1;
    if (static_cast<unsigned char>(name[position]) < 0xC0) return 1;
    while (end < name.size() && (static_cast<unsigned char>(name[end]) & 0xC0U) == 0x80U) ++end;
    return end - position;
}

// The last names of the path, at least one; empty if it has fewer.
std::string_view lastNames(std::string_view path, std::size_t count) {
    for (std::size_t end = path.size();;) {
        const std::size_t slash = path.substr(0, end).rfind('/');
        if (--count == 0) return path.substr(slash == std::string_view::npos ? 0 : slash + 1);
        if (slash == std::string_view::npos) return {};
        end = slash;
    }
}

}  // namespace

std::optional<std::string> parsePattern(std::string_view pattern, std::vector<GlobSteps>& alternatives) {
    if (pattern.size() > kMaxPatternSize)
        return "it is longer than " + std::to_string(kMaxPatternSize) + " characters";
    if (pattern.find('\0') != std::string_view::npos) return "it holds a NUL character";
    std::string problem;
    const std::vector<std::string> texts = expandBraces(pattern, problem);
    if (!problem.empty()) return problem;
    alternatives.reserve(texts.size());
    for (const std::string& text : texts) {
        if (std::optional<std::string> found = parseAlternative(text, alternatives.emplace_back()))
            return found;
    }
    return std::nullopt;
}

std::optional<std::string> problemOfPattern(std::string_view pattern) {
    std::vector<GlobSteps> alternatives;
    return parsePattern(pattern, alternatives);
}

bool searchesWholeTree(const std::vector<GlobSteps>& alternatives) {
    for (const GlobSteps& steps : alternatives) {
        for (const GlobStep& step : steps) {
            if (step.kind == GlobStep::Kind::Literal) break;
            if (step.kind == GlobStep::Kind::AnyDepth) return true;
        }
    }
    return false;
}

std::string quotedForPattern(std::string_view value) {
    std::string quoted;
    for (const char c : value) {
        if (std::string_view("*?[]{},\\!-").find(c) != std::string_view::npos) quoted.push_back('\\');
        quoted.push_back(c);
    }
    return quoted;
}

PathPattern::PathPattern(std::string_view pattern) {
    std::vector<GlobSteps> alternatives;
    parsePattern(pattern, alternatives);
    for (GlobSteps& steps : alternatives) {
        Steps compiled;
        for (GlobStep& step : steps) {
            Step& made = compiled.emplace_back();
            made.kind = step.kind;
            if (step.kind == GlobStep::Kind::Wildcard) made.wildcard.emplace(step.text);
            made.literal = std::move(step.text);
        }
        alternatives_.push_back(std::move(compiled));
    }
}

// Matches the steps behind a "**".
bool PathPattern::matchBelow(const Steps& steps, std::size_t step, std::string_view path) {
    const auto isAnyDepth = [](const Step& one) { return one.kind == GlobStep::Kind::AnyDepth; };
    if (std::none_of(steps.begin() + static_cast<std::ptrdiff_t>(step), steps.end(), isAnyDepth)) {
        const std::string_view rest = lastNames(path, steps.size() - step);
        return !rest.empty() && matchFrom(steps, step, rest);
    }
    for (std::string_view rest = path; !rest.empty(); takeField(rest, '/')) {
        if (matchFrom(steps, step, rest)) return true;
    }
    return false;
}

bool PathPattern::matchFrom(const Steps& steps, std::size_t step, std::string_view path) {
    for (; step < steps.size(); ++step) {
        if (steps[step].kind == GlobStep::Kind::AnyDepth) return matchBelow(steps, step + 1, path);
        if (path.empty()) return false;
        const std::string_view name = takeField(path, '/');
        const bool same =
            steps[step].wildcard ? steps[step].wildcard->matches(name) : steps[step].literal == name;
        if (!same) return false;
    }
    return path.empty();
}

bool PathPattern::matches(std::string_view path) const {
    path.remove_prefix(std::min(path.find_first_not_of('/'), path.size()));
    return std::ranges::any_of(alternatives_, [&](const Steps& steps) { return matchFrom(steps, 0, path); });
}

// Parses the set whose "[" is at `position`, and moves `position` to its "]".
NamePattern::Token NamePattern::parseSet(std::string_view pattern, std::size_t& position) {
    Token token;
    token.kind = Kind::Set;
    if (pattern[++position] == '!') {
        token.negated = true;
        ++position;
    }
    const auto takeCharacter = [&] {
        if (pattern[position] == '\\') ++position;
        return static_cast<unsigned char>(pattern[position++]);
    };
    do {
        const unsigned first = takeCharacter();
        unsigned last = first;
        if (pattern[position] == '-' && pattern[position + 1] != ']') {
            ++position;
            last = takeCharacter();
        }
        for (unsigned c = first; c <= last; ++c) token.bytes.set(c);
    } while (pattern[position] != ']');
    return token;
}

NamePattern::NamePattern(std::string_view pattern) {
    for (std::size_t i = 0; i < pattern.size(); ++i) {
        Token token;
        if (pattern[i] == '[')
            token = parseSet(pattern, i);
        else if (pattern[i] == '*')
            token.kind = Kind::Star;
        else if (pattern[i] == '?')
            token.kind = Kind::Character;
        else
            token.byte = pattern[i] == '\\' ? pattern[++i] : pattern[i];
        middle_.push_back(token);
    }
    const auto special = [](const Token& token) { return token.kind != Kind::Byte; };
    const auto begin = std::ranges::find_if(middle_, special);
    const auto end = std::find_if(middle_.rbegin(), middle_.rend(), special).base();
    for (auto token = middle_.begin(); token != begin; ++token) prefix_.push_back(token->byte);
    for (auto token = std::max(begin, end); token != middle_.end(); ++token) suffix_.push_back(token->byte);
    middle_.erase(std::max(begin, end), middle_.end());
    middle_.erase(middle_.begin(), begin);
}

// How many bytes at `position` the token matches; 0 when it does not match there.
std::size_t NamePattern::matchedBytes(const Token& token, std::string_view name, std::size_t position) {
    if (position >= name.size()) return 0;
    if (token.kind == Kind::Byte) return name[position] == token.byte ? 1 : 0;
    if (token.kind == Kind::Character) return lengthOfCharacter(name, position);
    const auto byte = static_cast<unsigned char>(name[position]);
    const bool in = byte < token.bytes.size() && token.bytes.test(byte);
    return in == token.negated ? 0 : lengthOfCharacter(name, position);
}

bool NamePattern::middleMatches(std::string_view name) const {
    std::size_t position = 0;
    std::size_t index = 0;
    std::size_t star = std::string_view::npos;  // the latest star, and where its match ends so far
    std::size_t starEnd = 0;
    while (position < name.size() || index < middle_.size()) {
        if (index < middle_.size() && middle_[index].kind == Kind::Star) {
            star = index++;
            starEnd = position;
            if (index == middle_.size()) return true;
            continue;
        }
        const std::size_t length = index < middle_.size() ? matchedBytes(middle_[index], name, position) : 0;
        if (length > 0) {
            position += length;
            ++index;
            continue;
        }
        if (star == std::string_view::npos || starEnd >= name.size()) return false;
        starEnd += lengthOfCharacter(name, starEnd);
        position = starEnd;
        index = star + 1;
    }
    return true;
}

bool NamePattern::matches(std::string_view name) const {
    if (name.size() < prefix_.size() + suffix_.size() || !name.starts_with(prefix_) ||
        !name.ends_with(suffix_))
        return false;
    return middleMatches(name.substr(prefix_.size(), name.size() - prefix_.size() - suffix_.size()));
}

}  // namespace toolkit::quorvis
