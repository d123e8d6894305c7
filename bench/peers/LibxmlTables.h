#pragma once

#include <string>

#include "hw/ZAVHwCtx.h"

namespace zavbench {

// libxml2's tree of the file, copied into the context's tables. False when the file is refused.
bool fillTablesWithLibxml(const std::string& path, ZAVHwCtx& context);

}  // namespace zavbench
