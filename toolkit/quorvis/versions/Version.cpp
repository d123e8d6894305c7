#include "toolkit/quorvis/versions/Version.h"

#include <utility>

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

}  // namespace

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
