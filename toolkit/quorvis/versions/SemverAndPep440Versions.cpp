#include <algorithm>
#include <array>
#include <string>

#include "kest/Ascii.h"
#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/versions/VersionSchemes.h"

namespace toolkit::quorvis {

namespace {

struct SemanticVersion {
    std::array<std::string_view, 3> core;
    std::string_view preRelease;  // empty for a release
};

bool inIdentifier(char c) {
    return isDigit(c) || isLetter(c) || c == '-';
}

bool isNumber(std::string_view text) {
    return consistsOf(text, isDigit);
}

bool hasLeadingZero(std::string_view digits) {
    return digits.size() > 1 && digits.front() == '0';
}

// Whether the list consists of identifiers separated by dots.
bool areIdentifiers(std::string_view list, bool zerosMayLead) {
    if (list.empty() || list.back() == '.') return false;
    while (!list.empty()) {
        const std::string_view identifier = takeField(list, '.');
        if (!consistsOf(identifier, inIdentifier)) return false;
        if (!zerosMayLead && isNumber(identifier) && hasLeadingZero(identifier)) return false;
    }
    return true;
}

bool readCore(std::string_view text, SemanticVersion& parts) {
    if (text.empty() || text.back() == '.') return false;
    for (std::string_view& part : parts.core) {
        const std::string_view digits = takeField(text, '.');
        if (!isNumber(digits) || hasLeadingZero(digits)) return false;
        std::string_view rest = digits;
        part = takeNumber(rest);
        if (text.empty()) return true;
    }
    return false;
}

std::optional<SemanticVersion> parseSemver(std::string_view version) {
    if (!version.empty() && (version.front() == 'v' || version.front() == 'V')) version.remove_prefix(1);
    const std::size_t plus = version.find('+');
    if (plus != std::string_view::npos) {
        if (!areIdentifiers(version.substr(plus + 1), true)) return {};
        version = version.substr(0, plus);
    }
    SemanticVersion parts;
    const std::size_t dash = version.find('-');
    if (dash != std::string_view::npos) {
        parts.preRelease = version.substr(dash + 1);
        if (!areIdentifiers(parts.preRelease, false)) return {};
    }
    if (!readCore(version.substr(0, dash), parts)) return {};
    return parts;
}

// Numbers are compared by value and precede all other identifiers.
std::weak_ordering compareIdentifiers(std::string_view left, std::string_view right) {
    const bool leftIsName = !isNumber(left);
    const bool rightIsName = !isNumber(right);
    if (leftIsName != rightIsName) return leftIsName <=> rightIsName;
    if (leftIsName) return left <=> right;
    return compareNumbers(takeNumber(left), takeNumber(right));
}

// A version without a pre-release is newer than its pre-releases.
std::weak_ordering comparePreReleases(std::string_view left, std::string_view right) {
    if (left.empty() || right.empty()) return left.empty() <=> right.empty();
    while (!left.empty() && !right.empty()) {
        const std::weak_ordering order = compareIdentifiers(takeField(left, '.'), takeField(right, '.'));
        if (order != 0) return order;
    }
    return !left.empty() <=> !right.empty();
}

using Number = std::string_view;  // digits without leading zeros

struct Pep440Version {
    Number epoch;
    std::string_view release;  // "1.2.0"
    char stage = 0;            // 'a', 'b', 'c' (release candidate); 0 for none
    Number preRelease;
    std::optional<Number> post;
    std::optional<Number> dev;
    std::string_view local;  // empty for none
};

bool isSeparator(char c) {
    return c == '.' || c == '-' || c == '_';
}

struct Word {
    std::string_view text;
    char stage;
};

// If one word is a prefix of another, the longer one comes first.
constexpr Word kStages[] = {{"alpha", 'a'},   {"a", 'a'},   {"beta", 'b'}, {"b", 'b'},
                            {"preview", 'c'}, {"pre", 'c'}, {"rc", 'c'},   {"c", 'c'}};
constexpr Word kPost[] = {{"post", 1}, {"rev", 1}, {"r", 1}};
constexpr Word kDev[] = {{"dev", 1}};

// Takes "[-_.]word[-_.][digits]" and returns the stage of the word. Takes nothing and returns 0 for any other text.
template <std::size_t Count>
char takeMarked(std::string_view& text, const Word (&words)[Count], Number& number) {
    std::string_view rest = text;
    if (!rest.empty() && isSeparator(rest.front())) rest.remove_prefix(1);
    for (const Word& word : words) {
        if (!rest.starts_with(word.text)) continue;
        rest.remove_prefix(word.text.size());
        if (rest.size() > 1 && isSeparator(rest[0]) && isDigit(rest[1])) rest.remove_prefix(1);
        number = takeNumber(rest);
        text = rest;
        return word.stage;
    }
    return 0;
}

// Takes numbers separated by dots. A trailing dot belongs to the next part.
std::string_view takeRelease(std::string_view& text) {
    std::size_t end = 0;
    while (end < text.size() && (isDigit(text[end]) || (end > 0 && text[end] == '.' &&
                                                        end + 1 < text.size() && isDigit(text[end + 1])))) {
        ++end;
    }
    const std::string_view release = text.substr(0, end);
    text.remove_prefix(end);
    return release;
}

void takePost(std::string_view& text, Pep440Version& parts) {
    Number number;
    if (takeMarked(text, kPost, number) != 0) {
        parts.post = number;
    } else if (text.size() > 1 && text[0] == '-' && isDigit(text[1])) {
        text.remove_prefix(1);
        parts.post = takeNumber(text);
    }
}

bool isLocal(std::string_view text) {
    if (text.empty() || isSeparator(text.front()) || isSeparator(text.back())) return false;
    const auto bothSeparate = [](char a, char b) { return isSeparator(a) && isSeparator(b); };
    return std::ranges::adjacent_find(text, bothSeparate) == text.end() &&
           consistsOf(text, [](char c) { return isDigit(c) || isLetter(c) || isSeparator(c); });
}

// REQUIRES: `version` is in lower case.
std::optional<Pep440Version> parsePep440(std::string_view version) {
    Pep440Version parts;
    version = trimmed(version);
    if (version.starts_with('v')) version.remove_prefix(1);
    parts.epoch = takeEpoch(version, '!');
    parts.release = takeRelease(version);
    if (parts.release.empty()) return {};
    parts.stage = takeMarked(version, kStages, parts.preRelease);
    takePost(version, parts);
    Number number;
    if (takeMarked(version, kDev, number) != 0) parts.dev = number;
    if (version.empty()) return parts;
    parts.local = version.substr(1);
    if (version.front() != '+' || !isLocal(parts.local)) return {};
    return parts;
}

std::weak_ordering compareReleases(std::string_view left, std::string_view right) {
    while (!left.empty() || !right.empty()) {
        std::string_view l = takeField(left, '.');
        std::string_view r = takeField(right, '.');
        if (const auto order = compareNumbers(takeNumber(l), takeNumber(r)); order != 0) return order;
    }
    return std::weak_ordering::equivalent;
}

// A development release precedes the alphas; a release without a stage follows the candidates.
char stageOf(const Pep440Version& parts) {
    if (parts.stage != 0) return parts.stage;
    return parts.dev && !parts.post ? 'A' : 'z';
}

// `none` is the order of a version without the number relative to one with it.
std::weak_ordering compareOptional(const std::optional<Number>& left, const std::optional<Number>& right,
                                   std::weak_ordering none) {
    if (left && right) return compareNumbers(*left, *right);
    if (left.has_value() == right.has_value()) return std::weak_ordering::equivalent;
    return left ? 0 <=> none : none;
}

// Takes the next part of a local version and the separator behind it.
std::string_view takeLocalPart(std::string_view& local) {
    const std::string_view part = takeRun(local, [](char c) { return !isSeparator(c); });
    if (!local.empty()) local.remove_prefix(1);
    return part;
}

std::weak_ordering compareLocals(std::string_view left, std::string_view right) {
    while (!left.empty() && !right.empty()) {
        std::string_view l = takeLocalPart(left);
        std::string_view r = takeLocalPart(right);
        const bool leftIsNumber = consistsOf(l, isDigit);
        const bool rightIsNumber = consistsOf(r, isDigit);
        if (leftIsNumber != rightIsNumber) return leftIsNumber <=> rightIsNumber;
        const std::weak_ordering order =
            leftIsNumber ? compareNumbers(takeNumber(l), takeNumber(r)) : std::weak_ordering(l <=> r);
        if (order != 0) return order;
    }
    return !left.empty() <=> !right.empty();
}

}  // namespace

VersionOrder compareSemver(std::string_view left, std::string_view right) {
    const std::optional<SemanticVersion> l = parseSemver(left);
    const std::optional<SemanticVersion> r = parseSemver(right);
    if (!l || !r) return {};
    for (std::size_t i = 0; i < l->core.size(); ++i) {
        if (const auto order = compareNumbers(l->core[i], r->core[i]); order != 0) return order;
    }
    return comparePreReleases(l->preRelease, r->preRelease);
}

VersionOrder comparePep440(std::string_view left, std::string_view right) {
    const std::string leftText = kest::lowerCase(left);
    const std::string rightText = kest::lowerCase(right);
    const std::optional<Pep440Version> l = parsePep440(leftText);
    const std::optional<Pep440Version> r = parsePep440(rightText);
    if (!l || !r) return {};
    if (const auto order = compareNumbers(l->epoch, r->epoch); order != 0) return order;
    if (const auto order = compareReleases(l->release, r->release); order != 0) return order;
    if (const auto order = stageOf(*l) <=> stageOf(*r); order != 0) return order;
    if (const auto order = compareNumbers(l->preRelease, r->preRelease); order != 0) return order;
    if (const auto order = compareOptional(l->post, r->post, std::weak_ordering::less); order != 0)
        return order;
    if (const auto order = compareOptional(l->dev, r->dev, std::weak_ordering::greater); order != 0)
        return order;
    return compareLocals(l->local, r->local);
}

}  // namespace toolkit::quorvis
