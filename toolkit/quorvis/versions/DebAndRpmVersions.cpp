#include "toolkit/quorvis/versions/VersionSchemes.h"

namespace toolkit::quorvis {

namespace {

struct DebVersion {
    std::string_view epoch;
    std::string_view upstream;
    std::string_view revision;
};

std::optional<DebVersion> parseDeb(std::string_view version) {
    DebVersion parts;
    const std::size_t length = version.size();
    parts.epoch = takeEpoch(version, ':');
    const bool hasEpoch = version.size() != length;
    const std::size_t dash = version.rfind('-');
    parts.upstream = version.substr(0, dash);
    const auto inRevision = [](char c) {
        return isDigit(c) || isLetter(c) || c == '.' || c == '+' || c == '~';
    };
    const auto inUpstream = [&](char c) { return inRevision(c) || c == '-' || (c == ':' && hasEpoch); };
    if (!consistsOf(parts.upstream, inUpstream)) return {};
    if (dash == std::string_view::npos) return parts;
    parts.revision = version.substr(dash + 1);
    if (!consistsOf(parts.revision, inRevision)) return {};
    return parts;
}

// The position of a non-digit in the order of characters. Digits and the end of the text are at 0.
int weight(std::string_view text) {
    if (text.empty() || isDigit(text.front())) return 0;
    if (text.front() == '~') return -1;
    const int code = static_cast<unsigned char>(text.front());
    return isLetter(text.front()) ? code : code + 256;
}

// Compares sequences of non-digits and numbers in turn.
std::weak_ordering compareDebParts(std::string_view left, std::string_view right) {
    while (!left.empty() || !right.empty()) {
        for (int l = weight(left), r = weight(right); l != 0 || r != 0; l = weight(left), r = weight(right)) {
            if (l != r) return l <=> r;
            left.remove_prefix(1);
            right.remove_prefix(1);
        }
        const std::weak_ordering order = compareNumbers(takeNumber(left), takeNumber(right));
        if (order != 0) return order;
    }
    return std::weak_ordering::equivalent;
}

struct RpmVersion {
    std::string_view epoch;
    std::string_view version;
    std::optional<std::string_view> release;
};

bool isAlphanumeric(char c) {
    return isDigit(c) || isLetter(c);
}

std::optional<RpmVersion> parseRpm(std::string_view version) {
    const auto allowed = [](char c) {
        return isAlphanumeric(c) || std::string_view("._+~^").find(c) != std::string_view::npos;
    };
    RpmVersion parts;
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

// Takes all separators from the front.
void skipSeparators(std::string_view& text) {
    takeRun(text, [](char c) { return !isAlphanumeric(c) && c != '~' && c != '^'; });
}

// The order of the possible continuations of a version: "~" is older than the end, "^" is newer than the end, and other
// characters are newer still.
int rank(std::string_view text) {
    if (startsWith(text, '~')) return 0;
    if (text.empty()) return 1;
    return startsWith(text, '^') ? 2 : 3;
}

// Takes a run of digits or letters from both texts and compares the runs. Numbers are newer than letters.
std::weak_ordering takeAndCompare(std::string_view& left, std::string_view& right) {
    const bool leftIsNumber = isDigit(left.front());
    const bool rightIsNumber = isDigit(right.front());
    if (leftIsNumber != rightIsNumber) return leftIsNumber <=> rightIsNumber;
    if (leftIsNumber) return compareNumbers(takeNumber(left), takeNumber(right));
    return takeRun(left, isLetter) <=> takeRun(right, isLetter);
}

std::weak_ordering compareRpmParts(std::string_view left, std::string_view right) {
    for (;;) {
        skipSeparators(left);
        skipSeparators(right);
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

VersionOrder compareDeb(std::string_view left, std::string_view right) {
    const std::optional<DebVersion> l = parseDeb(left);
    const std::optional<DebVersion> r = parseDeb(right);
    if (!l || !r) return {};
    if (const auto order = compareNumbers(l->epoch, r->epoch); order != 0) return order;
    if (const auto order = compareDebParts(l->upstream, r->upstream); order != 0) return order;
    return compareDebParts(l->revision, r->revision);
}

VersionOrder compareRpm(std::string_view left, std::string_view right) {
    const std::optional<RpmVersion> l = parseRpm(left);
    const std::optional<RpmVersion> r = parseRpm(right);
    if (!l || !r) return {};
    if (const auto order = compareNumbers(l->epoch, r->epoch); order != 0) return order;
    if (const auto order = compareRpmParts(l->version, r->version); order != 0) return order;
    if (!l->release || !r->release) return std::weak_ordering::equivalent;
    return compareRpmParts(*l->release, *r->release);
}

}  // namespace toolkit::quorvis
