#pragma once

#include <string>
#include <string_view>

#include "toolkit/quorvis/report/Match.h"

namespace toolkit::quorvis {

// Appends the element of a match, in pure ASCII and on a line of its own.
void appendMatch(std::string& xml, const Match& match);

// The results as an XML document, with these elements of matches. `complete` tells that nothing was left out because of
// a bound.
std::string outputDocument(std::string_view matches, bool complete);

}  // namespace toolkit::quorvis
