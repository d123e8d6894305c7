#pragma once

#include <cstdio>

#include "hw/ZAVHwCtx.h"

namespace zav {

// Writes the scanner's configuration, which lists the enabled groups, to a new file at `path`: 0, or 102 when
// it cannot be opened or written (the latter is logged).
int HW_generateHWConfigFile(ZAVHwCtx* context, const wchar_t* path);

// Writes a text; false unless all of it was taken.
bool HW_writeData(ZAVHwCtx* context, FILE* file, const char* text);

}  // namespace zav
