#pragma once

#include <re2/re2.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/leaves/EvaluationContext.h"
#include "toolkit/quorvis/leaves/LeafLookup.h"

namespace toolkit::quorvis {

// Walks through the matches of an expression in a text; they do not overlap.
class Matches {
  public:
    // Tells the groups up to `lastGroup`. REQUIRES: both outlive the walk.
    Matches(const re2::RE2& regex, std::string_view text, int lastGroup);

    // Goes to the next match, or to the first. False after the last one.
    bool next();

    // Where the match begins.
    std::size_t begin() const { return begin_; }
    // Whether the group has a part in the match. Group 0 is the whole match.
    bool has(int group) const;
    // The text of a group, cut to the longest value.
    std::string value(int group) const;

  private:
    const re2::RE2& regex_;
    re2::StringPiece text_;
    std::vector<re2::StringPiece> groups_;
    std::size_t begin_ = 0;
    std::size_t rest_ = 0;  // where to look for the next match
};

// The highest group that the query captures.
int lastCapture(const Query& query);

// Gives the item what the query captures from a match. A group without a part in it gives no value.
void addCaptures(const Query& query, const Matches& match, Item& item);

// Whether another match may become an item. Otherwise that there are too many fails in the result.
bool roomForMatch(EvaluationContext& context, const std::string& path, LeafResult& result);

}  // namespace toolkit::quorvis
