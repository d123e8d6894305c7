#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"

namespace zavbench {

// libxml2's tree of the file, copied into the context's results. False when the file is refused.
bool fillResultsWithLibxml(const std::string& path, ZAVSwCtx& context);

}  // namespace zavbench
