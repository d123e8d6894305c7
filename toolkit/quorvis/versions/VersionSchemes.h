// The comparison functions of the version schemes, and their common helpers.
#pragma once

#include <compare>
#include <optional>
#include <string_view>

namespace toolkit::quorvis {

// None when a text is not a valid version of the scheme.
using VersionOrder = std::optional<std::weak_ordering>;

// [epoch:]upstream[-revision] as compared by dpkg: letters precede other characters, "~" precedes the end.
VersionOrder compareDeb(std::string_view left, std::string_view right);

// [epoch:]version[-release] as compared by rpm: "~" precedes the end, "^" follows it. As in rpm's dependencies, releases
// are compared only if both versions have one.
VersionOrder compareRpm(std::string_view left, std::string_view right);

// Semantic Versioning 2.0.0. "v1.2" equals "1.2.0"; the text behind "+" is ignored.
VersionOrder compareSemver(std::string_view left, std::string_view right);

// Versions of Python packages (PEP 440): [epoch!]release[pre][post][dev][+local], in every permitted spelling.
VersionOrder comparePep440(std::string_view left, std::string_view right);

// Any text that contains a digit. Its parts are runs of digits and runs of ASCII letters. All other characters separate
// parts, and a "v" before the first digit is ignored. Parts are compared in turn: numbers by value, letters
// case-insensitively. Letters are between 0 and 1, and a missing part is 0. Therefore
// 1.8 = 1.8.0 < 1.8.0a < 1.8.0_392 < 1.10, and 1.0 < 1.0rc1.
VersionOrder compareDotted(std::string_view left, std::string_view right);

// Decimal integers of any length, with an optional sign.
VersionOrder compareInt(std::string_view left, std::string_view right);

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

inline bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Whether the text is not empty and `allowed` accepts each of its characters.
template <typename Allowed>
bool consistsOf(std::string_view text, Allowed allowed) {
    for (const char c : text) {
        if (!allowed(c)) return false;
    }
    return !text.empty();
}

// Takes the characters at the front that `wanted` accepts.
template <typename Wanted>
std::string_view takeRun(std::string_view& text, Wanted wanted) {
    std::size_t end = 0;
    while (end < text.size() && wanted(text[end])) ++end;
    const std::string_view run = text.substr(0, end);
    text.remove_prefix(end);
    return run;
}

// Takes the digits at the front. Returns them without leading zeros, so 0 is "", as is a missing number.
inline std::string_view takeNumber(std::string_view& text) {
    const std::string_view digits = takeRun(text, isDigit);
    return digits.substr(digits.find_first_not_of('0') == std::string_view::npos
                             ? digits.size()
                             : digits.find_first_not_of('0'));
}

// Compares by value. REQUIRES: both are digits without leading zeros.
inline std::weak_ordering compareNumbers(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return left.size() <=> right.size();
    return left <=> right;
}

// Takes a number and the separator behind it. Takes nothing and returns "" when the text has no epoch.
inline std::string_view takeEpoch(std::string_view& text, char separator) {
    std::string_view rest = text;
    const std::string_view epoch = takeNumber(rest);
    if (rest.size() == text.size() || rest.empty() || rest.front() != separator) return {};
    text = rest.substr(1);
    return epoch;
}

}  // namespace toolkit::quorvis
