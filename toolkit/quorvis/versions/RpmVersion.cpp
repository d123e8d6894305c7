#include "toolkit/quorvis/versions/VersionSchemes.h"

namespace toolkit::quorvis {
namespace {

struct Parts {
    std::string_view epoch;
    std::string_view version;
    std::optional<std::string_view> release;
};

bool isAlphanumeric(char c) {
    return isDigit(c) || isLetter(c);
}

std::optional<Parts> partsOf(std::string_view version) {
    const auto allowed = [](char c) {
        return isAlphanumeric(c) || std::string_view("._+~^").find(c) != std::string_view::npos;
    };
    Parts parts;
    parts.epoch = takeEpoch(version, ':');
    const std::size_t dash = version.rfind('-');
    parts.version = version.substr(0, dash);
    if (dash != std::string_view::npos) parts.release = version.substr(dash + 1);
    if (!consistsOf(parts.version, allowed)) return {};
    if (parts.release && !consistsOf(*parts.release, allowed)) return {};
    return parts;
}

bool startsWith(std::string_view text, char c) {
    return !text.empty() && text.front() == c;
}

// Takes the separators at the front, however many.
void passSeparators(std::string_view& text) {
    takeRun(text, [](char c) { return !isAlphanumeric(c) && c != '~' && c != '^'; });
}

// Where what `text` begins with stands when it is compared with something else: what is older than the end, the end,
// newer than the end, and whatever goes on plainly.
int rank(std::string_view text) {
    if (startsWith(text, '~')) return 0;
    if (text.empty()) return 1;
    return startsWith(text, '^') ? 2 : 3;
}

// Takes a run of digits or of letters from both, as the left one begins. Numbers are newer than letters.
std::weak_ordering takeAndCompare(std::string_view& left, std::string_view& right) {
    const bool leftIsNumber = isDigit(left.front());
    const bool rightIsNumber = isDigit(right.front());
    if (leftIsNumber != rightIsNumber) return leftIsNumber <=> rightIsNumber;
    if (leftIsNumber) return compareNumbers(takeNumber(left), takeNumber(right));
    return takeRun(left, isLetter) <=> takeRun(right, isLetter);
}

std::weak_ordering compareParts(std::string_view left, std::string_view right) {
    for (;;) {
        passSeparators(left);
        passSeparators(right);
        const int kind = rank(left);
        if (kind != rank(right)) return kind <=> rank(right);
        if (left.empty()) return std::weak_ordering::equivalent;
        if (kind == 3) {
            if (const auto order = takeAndCompare(left, right); order != 0) return order;
        } else {
            left.remove_prefix(1);
            right.remove_prefix(1);
        }
    }
}

}  // namespace

VersionOrder compareRpm(std::string_view left, std::string_view right) {
    const std::optional<Parts> l = partsOf(left);
    const std::optional<Parts> r = partsOf(right);
    if (!l || !r) return {};
    if (const auto order = compareNumbers(l->epoch, r->epoch); order != 0) return order;
    if (const auto order = compareParts(l->version, r->version); order != 0) return order;
    if (!l->release || !r->release) return std::weak_ordering::equivalent;
    return compareParts(*l->release, *r->release);
}

}  // namespace toolkit::quorvis
