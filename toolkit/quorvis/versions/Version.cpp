#include "toolkit/quorvis/versions/Version.h"

#include <algorithm>
#include <utility>

#include "kest/Ascii.h"
#include "toolkit/quorvis/versions/VersionSchemes.h"

namespace toolkit::quorvis {
namespace {

constexpr std::pair<std::string_view, Scheme> kSchemes[] = {
    {"deb", Scheme::Deb},       {"rpm", Scheme::Rpm}, {"semver", Scheme::Semver}, {"pep440", Scheme::Pep440},
    {"dotted", Scheme::Dotted}, {"int", Scheme::Int}, {"text", Scheme::Text},
};

struct Int {
    bool negative = false;
    std::string_view digits;
};

std::optional<Int> intOf(std::string_view text) {
    Int number;
    if (!text.empty() && (text.front() == '-' || text.front() == '+')) {
        number.negative = text.front() == '-';
        text.remove_prefix(1);
    }
    if (!consistsOf(text, isDigit)) return {};
    number.digits = takeNumber(text);
    if (number.digits.empty()) number.negative = false;
    return number;
}

// A number without leading zeros, or letters. Both 0 and a missing part are empty.
struct DottedPart {
    std::string_view text;
    bool letters = false;
};

bool separates(char c) {
    return !isDigit(c) && !isLetter(c);
}

DottedPart takeDottedPart(std::string_view& text) {
    takeRun(text, separates);
    if (!text.empty() && isLetter(text.front())) return {takeRun(text, isLetter), true};
    return {takeNumber(text), false};
}

std::weak_ordering compareLetters(std::string_view left, std::string_view right) {
    return std::lexicographical_compare_three_way(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char l, char r) -> std::weak_ordering { return kest::asciiLower(l) <=> kest::asciiLower(r); });
}

std::weak_ordering compareDottedParts(const DottedPart& left, const DottedPart& right) {
    if (left.letters && right.letters) return compareLetters(left.text, right.text);
    if (left.letters) return right.text.empty() ? std::weak_ordering::greater : std::weak_ordering::less;
    if (right.letters) return left.text.empty() ? std::weak_ordering::less : std::weak_ordering::greater;
    return compareNumbers(left.text, right.text);
}

// The version without leading separators and without a "v" before the first number. Empty when it contains no digit.
std::string_view withoutPrefix(std::string_view version) {
    if (std::ranges::none_of(version, isDigit)) return {};
    takeRun(version, separates);
    if (kest::asciiLower(version.front()) == 'v' && isDigit(version[1])) version.remove_prefix(1);
    return version;
}

}  // namespace

VersionOrder compareDotted(std::string_view left, std::string_view right) {
    left = withoutPrefix(left);
    right = withoutPrefix(right);
    if (left.empty() || right.empty()) return {};
    while (!left.empty() || !right.empty()) {
        const DottedPart l = takeDottedPart(left);
        const DottedPart r = takeDottedPart(right);
        if (const auto order = compareDottedParts(l, r); order != 0) return order;
    }
    return std::weak_ordering::equivalent;
}

VersionOrder compareInt(std::string_view left, std::string_view right) {
    const std::optional<Int> l = intOf(left);
    const std::optional<Int> r = intOf(right);
    if (!l || !r) return {};
    if (l->negative != r->negative) return r->negative <=> l->negative;
    return l->negative ? compareNumbers(r->digits, l->digits) : compareNumbers(l->digits, r->digits);
}

std::optional<Scheme> schemeNamed(std::string_view name) {
    for (const auto& [known, scheme] : kSchemes) {
        if (known == name) return scheme;
    }
    return {};
}

std::optional<std::weak_ordering> compareVersions(Scheme scheme, std::string_view left,
                                                  std::string_view right) {
    switch (scheme) {
        case Scheme::Deb:
            return compareDeb(left, right);
        case Scheme::Rpm:
            return compareRpm(left, right);
        case Scheme::Semver:
            return compareSemver(left, right);
        case Scheme::Pep440:
            return comparePep440(left, right);
        case Scheme::Dotted:
            return compareDotted(left, right);
        case Scheme::Int:
            return compareInt(left, right);
        case Scheme::Text:
            break;
    }
    return left <=> right;
}

}  // namespace toolkit::quorvis
