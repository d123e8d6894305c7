// How leaves of several kinds test values: by expressions, with their captures, and by versions.
#pragma once

#include <re2/re2.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"
#include "toolkit/quorvis/versions/Version.h"

namespace toolkit::quorvis {

// The query's regex. Null when it is invalid; then the result says so.
const re2::RE2* regexOf(const Query& query, LeafResult& result);

// Whether the attribute is not given or equals the text.
bool isOrAny(const Query& query, Attribute attribute, std::string_view text);

// Whether the query has one of the version tests: equals, atLeast, above, atMost, below.
bool hasVersionTest(const Query& query);

// Whether `version` passes all version tests of the query, in the scheme that the query names or else in
// `defaultScheme`. Unknown when a version cannot be compared.
Truth evaluateVersionTests(const Query& query, Scheme defaultScheme, std::string_view version);

// The same for a leaf: a version that cannot be compared does not pass and leaves the result incomplete.
bool passesVersionTests(const Query& query, Scheme defaultScheme, std::string_view version,
                        const std::string& path, LeafResult& result);

// Whether the value passes the query's regex and its version tests, in the scheme "dotted" by default.
bool passesValueTests(const Query& query, std::string_view value, const std::string& path,
                      LeafResult& result);

// Iterates over the matches of a regex in a text. They do not overlap.
class RegexMatches {
  public:
    // Captures the groups up to `lastGroup`. Matches begin at `from` or later. REQUIRES: the regex and the text outlive this.
    RegexMatches(const re2::RE2& regex, std::string_view text, int lastGroup, std::size_t from = 0);

    // Moves to the next match, initially to the first one. False after the last match.
    bool next();

    // The offset of the match.
    std::size_t begin() const { return begin_; }
    std::size_t end() const { return begin_ + groups_.front().size(); }
    // Whether the group took part in the match. Group 0 is the whole match.
    bool has(int group) const;
    // The text of a group, cut to kMaxValueSize.
    std::string value(int group) const;

  private:
    const re2::RE2& regex_;
    re2::StringPiece text_;
    std::vector<re2::StringPiece> groups_;
    std::size_t begin_ = 0;
    std::size_t rest_ = 0;  // where the search continues
};

// Whether the query captures groups of its regex.
bool hasGroups(const Query& query);

// The highest group that the query captures.
int lastCapture(const Query& query);

// Adds the captures of the query to the item. A group that took no part in the match gives no value.
void addCaptures(const Query& query, const RegexMatches& match, Item& item);

// Whether the result may have another match. If not, it becomes incomplete, with an event.
bool roomForMatch(EvaluationContext& context, const std::string& path, LeafResult& result);

}  // namespace toolkit::quorvis
