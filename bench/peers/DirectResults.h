#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"

namespace zavbench {

// The context's results filled straight from Expat's events, without a tree: what the results alone need. False
// when the file is refused.
bool fillResultsDirectly(const std::string& path, ZAVSwCtx& context);

}  // namespace zavbench
