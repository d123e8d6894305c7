#include <algorithm>

#include "kest/Ascii.h"
#include "toolkit/quorvis/versions/VersionSchemes.h"

namespace toolkit::quorvis {
namespace {

// A number without leading zeros, or letters. The number 0 is the empty text, as is what is missing.
struct Part {
    std::string_view text;
    bool letters = false;
};

bool separates(char c) {
    return !isDigit(c) && !isLetter(c);
}

Part takePart(std::string_view& text) {
    takeRun(text, separates);
    if (!text.empty() && isLetter(text.front())) return {takeRun(text, isLetter), true};
    return {takeNumber(text), false};
}

std::weak_ordering compareLetters(std::string_view left, std::string_view right) {
    return std::lexicographical_compare_three_way(
        left.begin(), left.end(), right.begin(), right.end(),
        [](char l, char r) -> std::weak_ordering { return kest::asciiLower(l) <=> kest::asciiLower(r); });
}

std::weak_ordering compareParts(const Part& left, const Part& right) {
    if (left.letters && right.letters) return compareLetters(left.text, right.text);
    if (left.letters) return right.text.empty() ? std::weak_ordering::greater : std::weak_ordering::less;
    if (right.letters) return left.text.empty() ? std::weak_ordering::less : std::weak_ordering::greater;
    return compareNumbers(left.text, right.text);
}

// Without what stands before the first part, nor a "v" before a number. Empty when there is no digit.
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
        const Part l = takePart(left);
        const Part r = takePart(right);
        if (const auto order = compareParts(l, r); order != 0) return order;
    }
    return std::weak_ordering::equivalent;
}

}  // namespace toolkit::quorvis
