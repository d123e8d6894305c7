#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"

namespace zavbench {

// Fills the context's results directly from Expat's events, without a tree: the memory that the results alone need.
// False if the file is refused.
bool fillResultsDirectly(const std::string& path, ZAVSwCtx& context);

}  // namespace zavbench
