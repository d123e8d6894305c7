#pragma once

#include <re2/re2.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"

namespace toolkit::quorvis {

// Iterates over the matches of a regex in a text. They do not overlap.
class RegexMatches {
  public:
    // Captures the groups up to `lastGroup`. REQUIRES: the regex and the text outlive this.
    RegexMatches(const re2::RE2& regex, std::string_view text, int lastGroup);

    // Moves to the next match, initially to the first one. False after the last match.
    bool next();

    // The offset of the match.
    std::size_t begin() const { return begin_; }
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

// The highest group that the query captures.
int lastCapture(const Query& query);

// Adds the captures of the query to the item. A group that took no part in the match gives no value.
void addCaptures(const Query& query, const RegexMatches& match, Item& item);

// Whether the result may have another match. If not, it becomes incomplete, with an event.
bool roomForMatch(EvaluationContext& context, const std::string& path, LeafResult& result);

}  // namespace toolkit::quorvis
