#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"

namespace zavbench {

// Fills the context's tables directly from Expat's events, without a tree: the memory that the tables alone need.
// False if the file is refused.
bool fillTablesDirectly(const std::string& path, ZAVHwCtx& context);

}  // namespace zavbench
