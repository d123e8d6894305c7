#include <algorithm>
#include <charconv>

#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

namespace {

// The bytes to search. Null when there are none.
std::shared_ptr<const std::string> bytesToSearch(const Query& query, const std::string& path,
                                                 EvaluationContext& context, LeafResult& result) {
    const std::string_view text = query.get(Attribute::MaxBytes);
    std::uint64_t limit = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), limit);
    if (!text.empty() && (error != std::errc() || end != text.data() + text.size())) {
        result.fail(EventCode::Unsupported, path, "maxBytes is not a number: " + std::string(text));
        return nullptr;
    }
    if (text.empty() || limit > context.settings().fileSystem.maxContentSize)
        return contentOf(path, context, result);
    return startOf(path, limit, context, result);
}

// Counts the lines of a text.
class LineCounter {
  public:
    explicit LineCounter(std::string_view text) : text_(text) {}

    // The number of the line at this offset. REQUIRES: offsets do not decrease.
    std::size_t lineOf(std::size_t offset) {
        const std::string_view passed = text_.substr(counted_, offset - counted_);
        line_ += static_cast<std::size_t>(std::ranges::count(passed, '\n'));
        counted_ = offset;
        return line_;
    }

  private:
    std::string_view text_;
    std::size_t counted_ = 0;
    std::size_t line_ = 1;
};

}  // namespace

LeafResult lookUpContent(const Query& query, EvaluationContext& context) {
    LeafResult result;
    const RE2* const regex = regexOf(query, result);
    if (regex == nullptr) return result;
    const std::string path(query.get(Attribute::Path));
    const std::shared_ptr<const std::string> content = bytesToSearch(query, path, context, result);
    if (content == nullptr) return result;
    // The content filter searches whole files.
    const bool whole = !query.has(Attribute::MaxBytes);
    if (whole && !context.contentFilters().mayMatch(path, *regex, *content)) return result;

    LineCounter lines(*content);
    for (RegexMatches matches(*regex, *content, lastCapture(query)); matches.next();) {
        if (!roomForMatch(context, path, result)) break;
        Item item;
        item.source = path;
        item.set("path", path);
        item.set("line", std::to_string(lines.lineOf(matches.begin())));
        item.set("match", matches.value(0));
        addCaptures(query, matches, item);
        keepItem(context.budget(), result, std::move(item));
    }
    return result;
}

}  // namespace toolkit::quorvis
