#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"

namespace zavbench {

// Reads the file into a tree of libxml2 and copies it into the context's tables. False if the file is refused.
bool fillTablesWithLibxml(const std::string& path, ZAVHwCtx& context);

}  // namespace zavbench
