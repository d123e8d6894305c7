#pragma once

#include <re2/set.h>

#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace toolkit::quorvis {

// Searches a text for many expressions at once.
class RegexSet {
  public:
    static constexpr std::size_t kFewest = 4;   // fewer are faster one by one
    static constexpr std::size_t kMost = 1000;  // more at once need too much memory

    // Of expressions that compileRegex() compiles in this encoding.
    RegexSet(std::span<const std::string_view> patterns, re2::RE2::Options::Encoding encoding);

    // The indexes of those that match somewhere in the text; none when that cannot be found out.
    std::optional<std::vector<int>> matching(std::string_view text) const;

  private:
    re2::RE2::Set set_;
    bool ready_ = true;
};

}  // namespace toolkit::quorvis
