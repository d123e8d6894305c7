#pragma once

#include <string>
#include <vector>

#include "fuzz/hostile/Frame.h"

namespace hostile {

// A signatures file made by the grammar of the language, with leaves that look at these paths. Most are valid.
std::string signaturesAbout(Random& random, const std::vector<std::string>& paths);

}  // namespace hostile
