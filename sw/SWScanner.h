#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"

namespace zav {

// Runs the scanner on a configuration and a signatures file, and names the files that it is to write. Its
// status goes to the context's returnCode, -1 when it could not be launched.
// Returns 0; 3 for a null context; 202 when the scanner ended with 3; 203 when it ended with another status
// than 0 or could not be launched; else what the workspace answered to the request for a name.
int SW_ExecuteScanner(ZAVSwCtx* context, std::wstring configFile, std::wstring signatureFile,
                      std::wstring& warningsFile, std::wstring& outputFile);

}  // namespace zav
