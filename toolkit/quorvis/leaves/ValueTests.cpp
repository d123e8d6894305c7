#include "toolkit/quorvis/leaves/ValueTests.h"

#include <re2/re2.h>

#include <algorithm>
#include <compare>
#include <optional>
#include <utility>

#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {

namespace {

using Accepts = bool (*)(std::partial_ordering);

// How the version of an item must compare with the version in the test.
constexpr std::pair<Attribute, Accepts> kVersionTests[] = {
    {Attribute::Equals, std::is_eq},   {Attribute::AtLeast, std::is_gteq}, {Attribute::Above, std::is_gt},
    {Attribute::AtMost, std::is_lteq}, {Attribute::Below, std::is_lt},
};

}  // namespace

const re2::RE2* regexOf(const Query& query, LeafResult& result) {
    std::string problem;
    const RE2* const regex = compileRegex(query.get(Attribute::Regex), query.get(Attribute::Flags), problem);
    if (regex == nullptr) result.fail(EventCode::Unsupported, {}, "wrong expression: " + problem);
    return regex;
}

bool isOrAny(const Query& query, Attribute attribute, std::string_view text) {
    return !query.has(attribute) || query.get(attribute) == text;
}

bool hasVersionTest(const Query& query) {
    for (const auto& [attribute, accepts] : kVersionTests) {
        if (query.has(attribute)) return true;
    }
    return false;
}

Truth evaluateVersionTests(const Query& query, Scheme defaultScheme, std::string_view version) {
    const std::optional<Scheme> scheme =
        query.has(Attribute::Scheme) ? schemeNamed(query.get(Attribute::Scheme)) : defaultScheme;
    Truth truth = Truth::True;
    for (const auto& [attribute, accepts] : kVersionTests) {
        if (!query.has(attribute)) continue;
        const std::optional<std::weak_ordering> order =
            scheme ? compareVersions(*scheme, version, query.get(attribute)) : std::nullopt;
        if (!order) {
            truth = Truth::Unknown;
        } else if (!accepts(*order)) {
            return Truth::False;
        }
    }
    return truth;
}

bool passesVersionTests(const Query& query, Scheme defaultScheme, std::string_view version,
                        const std::string& path, LeafResult& result) {
    if (!hasVersionTest(query)) return true;
    const Truth truth = evaluateVersionTests(query, defaultScheme, version);
    if (truth == Truth::Unknown) {
        result.fail(EventCode::Unsupported, path,
                    "cannot compare the version \"" + std::string(version.substr(0, 64)) + "\"");
    }
    return truth == Truth::True;
}

bool passesValueTests(const Query& query, std::string_view value, const std::string& path,
                      LeafResult& result) {
    if (query.has(Attribute::Regex)) {
        const RE2* const regex = regexOf(query, result);
        if (regex == nullptr || !RE2::PartialMatch({value.data(), value.size()}, *regex)) return false;
    }
    return passesVersionTests(query, Scheme::Dotted, value, path, result);
}

RegexMatches::RegexMatches(const re2::RE2& regex, std::string_view text, int lastGroup, std::size_t from)
    : regex_(regex),
      text_(text.data(), text.size()),
      groups_(static_cast<std::size_t>(std::min(lastGroup, regex.NumberOfCapturingGroups())) + 1),
      rest_(from) {}

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

bool hasGroups(const Query& query) {
    return std::ranges::any_of(query.captures(), [](const Capture& capture) { return capture.of.empty(); });
}

int lastCapture(const Query& query) {
    int last = 0;
    for (const Capture& capture : query.captures()) {
        if (capture.of.empty()) last = std::max(last, capture.group);
    }
    return last;
}

void addCaptures(const Query& query, const RegexMatches& match, Item& item) {
    for (const Capture& capture : query.captures()) {
        if (capture.of.empty() && match.has(capture.group))
            item.set(capture.name, match.value(capture.group));
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
