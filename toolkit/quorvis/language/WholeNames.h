#pragma once

#include <string>
#include <vector>

#include "toolkit/quorvis/language/Signature.h"

namespace toolkit::quorvis {

// Tells of each attribute that is compared as it stands and yet looks like a pattern: path "/opt/*/x". There may be
// a file or package of just that name.
std::vector<std::string> wildcardsInWholeNames(const Leaf& leaf);

}  // namespace toolkit::quorvis
