#pragma once

#include <cstdio>

#include "hw/ZAVHwCtx.h"

namespace zav {

// Writes the scanner's configuration, which lists the enabled groups, to a new file at `path`. Returns 0, or 102 when the
// file cannot be created or written. Only a failed write is logged here.
int HW_generateHWConfigFile(ZAVHwCtx* context, const wchar_t* path);

// Writes a text. False unless it was written completely.
bool HW_writeData(ZAVHwCtx* context, FILE* file, const char* text);

}  // namespace zav
