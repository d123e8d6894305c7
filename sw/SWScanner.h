#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"

namespace zav {

// Runs the scanner with a configuration file and a signatures file, and stores the names of the files that it writes. The
// context's returnCode becomes the exit status, or -1 when the scanner could not be started.
// Returns 0; 3 for a null context; 202 when the exit status is 3; 203 when it is another nonzero value or the scanner
// could not be started; otherwise the error code of the request for a file name.
int SW_ExecuteScanner(ZAVSwCtx* context, std::wstring configFile, std::wstring signatureFile,
                      std::wstring& warningsFile, std::wstring& outputFile);

}  // namespace zav
