#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace toolkit::quorvis {

// The texts that a pattern with `{a,b}` stands for; escapes and sets of characters stay as they are. Empty, with
// `problem` told in words, when the braces do not fit together or stand for more than 64 texts.
std::vector<std::string> withoutBraces(std::string_view pattern, std::string& problem);

}  // namespace toolkit::quorvis
