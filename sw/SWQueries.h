#pragma once

#include "sw/ZAVSwCtx.h"

namespace zav {

// Releases all results and warnings with all that was handed out of them; there are no valid results then.
// Nothing happens for null. Needs no memory.
void SW_deleteResults(ZAVSwCtx* context);

}  // namespace zav
