#include "toolkit/quorvis/walk/GlobPattern.h"

#include <algorithm>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/walk/GlobBraces.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kLongestPattern = 4096;

// Takes the next name from a pattern without braces. A slash behind a backslash does not end it.
std::string_view takeName(std::string_view& pattern) {
    std::size_t end = 0;
    while (end < pattern.size() && pattern[end] != '/') end += pattern[end] == '\\' ? 2 : 1;
    end = std::min(end, pattern.size());
    const std::string_view name = pattern.substr(0, end);
    pattern.remove_prefix(std::min(end + 1, pattern.size()));
    return name;
}

// Whether every character of it means itself.
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

// The problem of the set that stands at `start`, whose end is put into `end`.
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

std::optional<std::string> readAlternative(std::string_view pattern, GlobSteps& steps) {
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

}  // namespace

std::optional<std::string> readPattern(std::string_view pattern, std::vector<GlobSteps>& alternatives) {
    if (pattern.size() > kLongestPattern)
        return "it is longer than " + std::to_string(kLongestPattern) + " characters";
    if (pattern.find('\0') != std::string_view::npos) return "it holds a NUL character";
    std::string problem;
    const std::vector<std::string> texts = withoutBraces(pattern, problem);
    if (!problem.empty()) return problem;
    alternatives.reserve(texts.size());
    for (const std::string& text : texts) {
        if (std::optional<std::string> found = readAlternative(text, alternatives.emplace_back()))
            return found;
    }
    return std::nullopt;
}

std::optional<std::string> problemOfPattern(std::string_view pattern) {
    std::vector<GlobSteps> alternatives;
    return readPattern(pattern, alternatives);
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

std::vector<GlobSteps> stepsOf(std::string_view pattern) {
    std::vector<GlobSteps> alternatives;
    readPattern(pattern, alternatives);
    return alternatives;
}

PathPattern::PathPattern(std::string_view pattern) {
    for (GlobSteps& steps : stepsOf(pattern)) {
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

bool PathPattern::matchFrom(const Steps& steps, std::size_t step, std::string_view path) {
    for (; step < steps.size(); ++step) {
        if (steps[step].kind == GlobStep::Kind::AnyDepth) {
            for (std::string_view rest = path; !rest.empty(); takeField(rest, '/')) {
                if (matchFrom(steps, step + 1, rest)) return true;
            }
            return false;
        }
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

}  // namespace toolkit::quorvis
