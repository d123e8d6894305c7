#pragma once

#include <span>
#include <string>

#include "toolkit/quorvis/Match.h"

namespace toolkit::quorvis {

// The results as an XML document in pure ASCII, one line for each match. `complete` tells that nothing was left
// out because of a bound.
std::string outputDocument(std::span<const Match> matches, bool complete);

}  // namespace toolkit::quorvis
