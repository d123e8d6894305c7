#pragma once

#include <cstdio>
#include <string>

#include "sw/ZAVSwCtx.h"

namespace zav {

// Writes the scanner's configuration, which holds the preset variables and the plug-in settings, to a new file in the
// context's temporary directory and stores its name. Returns 0; 3 for a null context; 201 when no name is available or a
// write failed, which is logged. A file that cannot be created is not an error here: the scanner will report it.
int SW_CreateConfigFile(ZAVSwCtx* context, std::wstring& configFile);

// Writes a text. False for null or unless the text was written completely. Each wide character is reduced to its low 8
// bits; a character for which these are zero ends the text.
bool SW_writeData(ZAVSwCtx* context, FILE* stream, const char* text);
bool SW_writeData(ZAVSwCtx* context, FILE* stream, const wchar_t* text);

}  // namespace zav
