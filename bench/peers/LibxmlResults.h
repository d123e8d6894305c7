#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"

namespace zavbench {

// Reads the file into a tree of libxml2 and copies it into the context's results. False if the file is refused.
bool fillResultsWithLibxml(const std::string& path, ZAVSwCtx& context);

}  // namespace zavbench
