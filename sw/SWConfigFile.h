#pragma once

#include <cstdio>
#include <string>

#include "sw/ZAVSwCtx.h"

namespace zav {

// Writes the scanner's configuration, which holds the preset variables and the plug-in settings, to a new
// file of the workspace and stores its name: 0; 3 for a null context; 201 when no name is free or a write
// failed (the latter is logged). A file that cannot be opened is a success: the scanner will miss it.
int SW_CreateConfigFile(ZAVSwCtx* context, std::wstring& configFile);

// Writes a text; false for null, or unless all of it was taken. Of a wide text each character is cut to its
// low 8 bits, and what stands behind one that becomes zero is not written.
bool SW_writeData(ZAVSwCtx* context, FILE* stream, const char* text);
bool SW_writeData(ZAVSwCtx* context, FILE* stream, const wchar_t* text);

}  // namespace zav
