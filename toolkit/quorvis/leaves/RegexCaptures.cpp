#include "toolkit/quorvis/leaves/RegexCaptures.h"

#include <algorithm>

#include "toolkit/quorvis/formats/ParseLimits.h"

namespace toolkit::quorvis {

RegexMatches::RegexMatches(const re2::RE2& regex, std::string_view text, int lastGroup)
    : regex_(regex),
      text_(text.data(), text.size()),
      groups_(static_cast<std::size_t>(std::min(lastGroup, regex.NumberOfCapturingGroups())) + 1) {}

bool RegexMatches::next() {
    if (rest_ > text_.size() || !regex_.Match(text_, rest_, text_.size(), RE2::UNANCHORED, groups_.data(),
                                              static_cast<int>(groups_.size()))) {
        rest_ = text_.size() + 1;
        return false;
    }
    const re2::StringPiece& whole = groups_.front();
    begin_ = static_cast<std::size_t>(whole.data() - text_.data());
    rest_ = begin_ + std::max(whole.size(), std::size_t{1});
    return true;
}

bool RegexMatches::has(int group) const {
    const auto index = static_cast<std::size_t>(group);
    return index < groups_.size() && groups_[index].data() != nullptr;
}

std::string RegexMatches::value(int group) const {
    const re2::StringPiece& text = groups_[static_cast<std::size_t>(group)];
    return std::string(text.data(), std::min(text.size(), kMaxValueSize));
}

int lastCapture(const Query& query) {
    int last = 0;
    for (const Capture& capture : query.captures()) last = std::max(last, capture.group);
    return last;
}

void addCaptures(const Query& query, const RegexMatches& match, Item& item) {
    for (const Capture& capture : query.captures()) {
        if (match.has(capture.group)) item.set(capture.name, match.value(capture.group));
    }
}

bool roomForMatch(EvaluationContext& context, const std::string& path, LeafResult& result) {
    const std::uint64_t limit = context.settings().fileSystem.maxMatches;
    if (result.items.size() >= limit) {
        result.fail(EventCode::LimitMatches, path, "more than " + std::to_string(limit) + " matches");
        return false;
    }
    context.budget().checkTime();
    return true;
}

}  // namespace toolkit::quorvis
