#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"

namespace zavbench {

// The context's tables filled straight from Expat's events, without a tree: what the tables alone need. False
// when the file is refused.
bool fillTablesDirectly(const std::string& path, ZAVHwCtx& context);

}  // namespace zavbench
