#pragma once

#include <memory>

#include "sw/ZAVSwCtx.h"

namespace zavbench {

// Appends a result whose variables are complete.
void addResult(ZAVSwCtx& context, std::unique_ptr<ZAVSwResult> result);

// Makes all results ready for the getters.
void finishResults(ZAVSwCtx& context);

}  // namespace zavbench
