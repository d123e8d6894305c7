#include "toolkit/quorvis/versions/VersionSchemes.h"

namespace toolkit::quorvis {
namespace {

struct Parts {
    std::string_view epoch;
    std::string_view upstream;
    std::string_view revision;
};

std::optional<Parts> partsOf(std::string_view version) {
    Parts parts;
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

// Where a character that is no digit stands among the others; digits and the end stand at 0.
int weight(std::string_view text) {
    if (text.empty() || isDigit(text.front())) return 0;
    if (text.front() == '~') return -1;
    const int code = static_cast<unsigned char>(text.front());
    return isLetter(text.front()) ? code : code + 256;
}

// Parts without digits and numbers in turn.
std::weak_ordering compareParts(std::string_view left, std::string_view right) {
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

}  // namespace

VersionOrder compareDeb(std::string_view left, std::string_view right) {
    const std::optional<Parts> l = partsOf(left);
    const std::optional<Parts> r = partsOf(right);
    if (!l || !r) return {};
    if (const auto order = compareNumbers(l->epoch, r->epoch); order != 0) return order;
    if (const auto order = compareParts(l->upstream, r->upstream); order != 0) return order;
    return compareParts(l->revision, r->revision);
}

}  // namespace toolkit::quorvis
