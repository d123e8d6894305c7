#pragma once

#include <string>
#include <string_view>

namespace re2 {
class RE2;
}

namespace toolkit::quorvis {

// The most groups that an expression may have.
constexpr int kMostGroups = 32;

// Compiles an expression as signatures write them; `flags` are letters of "ims". One that was compiled before
// is handed out again: it lives as long as the process. Null, with `problem` told in words, when it is wrong,
// too long, too complex or has too many groups.
const re2::RE2* compileRegex(std::string_view pattern, std::string_view flags, std::string& problem);

// Lets go of all that were compiled, with the memory that searching took. REQUIRES: nobody uses one any more.
void forgetRegexes();

// The expression that matches just this value.
std::string quotedForRegex(std::string_view value);

}  // namespace toolkit::quorvis
