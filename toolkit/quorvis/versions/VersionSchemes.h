// How each scheme compares two versions, and what they have in common.
#pragma once

#include <compare>
#include <optional>
#include <string_view>

namespace toolkit::quorvis {

using VersionOrder = std::optional<std::weak_ordering>;

// [epoch:]upstream[-revision] as dpkg sorts it: letters before other characters, "~" before the end.
VersionOrder compareDeb(std::string_view left, std::string_view right);

// [epoch:]version[-release] as rpm sorts it, "~" before the end and "^" behind it. As in its dependencies, a
// release counts only when both have one.
VersionOrder compareRpm(std::string_view left, std::string_view right);

// Semantic versions 2.0.0. "v1.2" is "1.2.0"; what stands behind "+" does not count.
VersionOrder compareSemver(std::string_view left, std::string_view right);

// The versions of Python packages: [epoch!]release[pre][post][dev][+local], in any spelling that is allowed.
VersionOrder comparePep440(std::string_view left, std::string_view right);

// Any text with a digit. Its parts are runs of digits and runs of ASCII letters; whatever else there is, "." and "_"
// above all, separates them, and a "v" before the first digit is passed over. Parts are compared one by one:
// numbers by value, letters by bytes as if all were small, letters behind 0 and before 1, and a part that is missing
// is 0. So 1.8 = 1.8.0 < 1.8.0a < 1.8.0_392 < 1.10, and 1.0 < 1.0rc1.
VersionOrder compareDotted(std::string_view left, std::string_view right);

// Whole decimal numbers of any length, with or without a sign.
VersionOrder compareInt(std::string_view left, std::string_view right);

inline bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

inline bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Whether there are characters, all of which `allowed` allows.
template <typename Allowed>
bool consistsOf(std::string_view text, Allowed allowed) {
    for (const char c : text) {
        if (!allowed(c)) return false;
    }
    return !text.empty();
}

// Takes the characters at the front that `wanted` wants.
template <typename Wanted>
std::string_view takeRun(std::string_view& text, Wanted wanted) {
    std::size_t end = 0;
    while (end < text.size() && wanted(text[end])) ++end;
    const std::string_view run = text.substr(0, end);
    text.remove_prefix(end);
    return run;
}

// Takes the digits at the front, and gives them without leading zeros: "" for 0 and for no digit.
inline std::string_view takeNumber(std::string_view& text) {
    const std::string_view digits = takeRun(text, isDigit);
    return digits.substr(digits.find_first_not_of('0') == std::string_view::npos
                             ? digits.size()
                             : digits.find_first_not_of('0'));
}

// By value. Both are digits without leading zeros.
inline std::weak_ordering compareNumbers(std::string_view left, std::string_view right) {
    if (left.size() != right.size()) return left.size() <=> right.size();
    return left <=> right;
}

// Takes "epoch" and `separator` when digits stand before it, without leading zeros; "" where there is no epoch.
inline std::string_view takeEpoch(std::string_view& text, char separator) {
    std::string_view rest = text;
    const std::string_view epoch = takeNumber(rest);
    if (rest.size() == text.size() || rest.empty() || rest.front() != separator) return {};
    text = rest.substr(1);
    return epoch;
}

}  // namespace toolkit::quorvis
