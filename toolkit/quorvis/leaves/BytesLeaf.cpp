#include <charconv>
#include <optional>

#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/leaves/PieceSearch.h"
#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

namespace {

// The number in an attribute, or `otherwise`. None when it is invalid, which the result says.
std::optional<std::uint64_t> numberIn(const Query& query, Attribute attribute, std::uint64_t otherwise,
                                      LeafResult& result) {
    const std::string_view text = query.get(attribute);
    if (text.empty()) return otherwise;
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error == std::errc() && end == text.data() + text.size()) return number;
    result.fail(EventCode::Unsupported, {},
                std::string(nameOf(attribute)) + " is no number: " + std::string(text));
    return std::nullopt;
}

// None when an attribute is invalid.
std::optional<PieceRange> rangeOf(const Query& query, std::uint64_t fileSize, LeafResult& result) {
    const auto from = numberIn(query, Attribute::From, 0, result);
    const auto most = numberIn(query, Attribute::MaxBytes, fileSize, result);
    const auto longest = numberIn(query, Attribute::MaxMatch, kLongestMatch, result);
    if (!from || !most || !longest) return std::nullopt;
    const std::uint64_t offset = std::min(*from, fileSize);
    return PieceRange{offset, std::min(*most, fileSize - offset), std::min(*longest, kLimitOfMaxMatch)};
}

}  // namespace

LeafResult lookUpBytes(const Query& query, EvaluationContext& context) {
    LeafResult result;
    const RE2* const regex = regexOf(query, result);
    if (regex == nullptr) return result;
    const std::string path(query.get(Attribute::Path));
    const std::optional<RandomAccessFile> file = openFile(path, context, result);
    if (!file) return result;
    const std::optional<PieceRange> range = rangeOf(query, file->size(), result);
    if (!range) return result;
    const std::uint64_t limit = context.settings().fileSystem.maxHashedSize;
    if (range->size > limit) {
        result.fail(EventCode::LimitBytes, path, "more than " + std::to_string(limit) + " bytes to search");
        return result;
    }
    const bool whole = searchPieces(*file, *range, *regex, lastCapture(query),
                                    [&](const RegexMatches& match, std::uint64_t offset) {
                                        if (!roomForMatch(context, path, result)) return false;
                                        Item item;
                                        item.source = path;
                                        item.set("path", path);
                                        item.set("offset", std::to_string(offset));
                                        item.set("match", match.value(0));
                                        addCaptures(query, match, item);
                                        keepItem(context.budget(), result, std::move(item));
                                        return true;
                                    });
    if (!whole) result.fail(EventCode::Io, path, "cannot be read as a whole");
    return result;
}

}  // namespace toolkit::quorvis
