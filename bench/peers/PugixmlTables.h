#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"

namespace zavbench {

// Reads the file into a tree of pugixml and copies it into the context's tables. False if the file is refused.
bool fillTablesWithPugixml(const std::string& path, ZAVHwCtx& context);

}  // namespace zavbench
