#pragma once

#include <memory>

#include "sw/ZAVSwCtx.h"

namespace zavbench {

// Appends a result with complete variables.
void addResult(ZAVSwCtx& context, std::unique_ptr<ZAVSwResult> result);

// Prepares all results for the getters.
void finishResults(ZAVSwCtx& context);

}  // namespace zavbench
