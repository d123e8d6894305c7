#include <array>

#include "toolkit/machine/text/Lines.h"
#include "toolkit/quorvis/versions/VersionSchemes.h"

namespace toolkit::quorvis {
namespace {

struct Parts {
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

// A list of identifiers with dots between them.
bool areIdentifiers(std::string_view list, bool zerosMayLead) {
    if (list.empty() || list.back() == '.') return false;
    while (!list.empty()) {
        const std::string_view identifier = takeField(list, '.');
        if (!consistsOf(identifier, inIdentifier)) return false;
        if (!zerosMayLead && isNumber(identifier) && hasLeadingZero(identifier)) return false;
    }
    return true;
}

bool readCore(std::string_view text, Parts& parts) {
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

std::optional<Parts> partsOf(std::string_view version) {
    if (!version.empty() && (version.front() == 'v' || version.front() == 'V')) version.remove_prefix(1);
    const std::size_t plus = version.find('+');
    if (plus != std::string_view::npos) {
        if (!areIdentifiers(version.substr(plus + 1), true)) return {};
        version = version.substr(0, plus);
    }
    Parts parts;
    const std::size_t dash = version.find('-');
    if (dash != std::string_view::npos) {
        parts.preRelease = version.substr(dash + 1);
        if (!areIdentifiers(parts.preRelease, false)) return {};
    }
    if (!readCore(version.substr(0, dash), parts)) return {};
    return parts;
}

// Numbers by value and before all others.
std::weak_ordering compareIdentifiers(std::string_view left, std::string_view right) {
    const bool leftIsName = !isNumber(left);
    const bool rightIsName = !isNumber(right);
    if (leftIsName != rightIsName) return leftIsName <=> rightIsName;
    if (leftIsName) return left <=> right;
    return compareNumbers(takeNumber(left), takeNumber(right));
}

// A version without one is the release, and newer than all that came before it.
std::weak_ordering comparePreReleases(std::string_view left, std::string_view right) {
    if (left.empty() || right.empty()) return left.empty() <=> right.empty();
    while (!left.empty() && !right.empty()) {
        const std::weak_ordering order = compareIdentifiers(takeField(left, '.'), takeField(right, '.'));
        if (order != 0) return order;
    }
    return !left.empty() <=> !right.empty();
}

}  // namespace

VersionOrder compareSemver(std::string_view left, std::string_view right) {
    const std::optional<Parts> l = partsOf(left);
    const std::optional<Parts> r = partsOf(right);
    if (!l || !r) return {};
    for (std::size_t i = 0; i < l->core.size(); ++i) {
        if (const auto order = compareNumbers(l->core[i], r->core[i]); order != 0) return order;
    }
    return comparePreReleases(l->preRelease, r->preRelease);
}

}  // namespace toolkit::quorvis
