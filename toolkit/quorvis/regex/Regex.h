#pragma once

#include <re2/set.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvis {

// The maximum number of groups in an expression.
constexpr int kMaxGroups = 32;

// Compiles a regular expression of a signature; `flags` consists of the letters "ims". Compiled expressions are cached
// until forgetRegexes(). Returns null and sets `problem` when the expression is invalid, too long, too complex or has
// too many groups.
const re2::RE2* compileRegex(std::string_view pattern, std::string_view flags, std::string& problem);

// Releases all compiled expressions. REQUIRES: no pointer from compileRegex() is used any more.
void forgetRegexes();

// The expression that matches exactly this value.
std::string quotedForRegex(std::string_view value);

// The number of groups of a short and simple expression. It is known to be valid without compiling it, which takes a
// hundred times as long. None for every other expression, valid or invalid.
std::optional<int> groupsOfPlainRegex(std::string_view pattern);

// Searches a text for many expressions at once.
class RegexSet {
  public:
    static constexpr std::size_t kMin = 4;     // searching for fewer one by one is faster
    static constexpr std::size_t kMax = 1000;  // more need too much memory

    // REQUIRES: compileRegex() compiles each of the patterns in this encoding.
    RegexSet(std::span<const std::string_view> patterns, re2::RE2::Options::Encoding encoding);

    // The indexes of the expressions that match somewhere in the text. None when the search fails, for example for lack
    // of memory.
    std::optional<std::vector<int>> matching(std::string_view text) const;

  private:
    re2::RE2::Set set_;
    bool ready_ = true;
};

}  // namespace toolkit::quorvis
