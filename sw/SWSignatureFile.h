#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"

namespace zav {

// Writes signatures, each as it stands, to a new file of the workspace and stores its name: 0; 3 for a null
// context; 202 when the file cannot be opened or a write failed (the latter is logged), a null signature
// included; else what the workspace answered to the request for a name.
int SW_CreateSignatures(ZAVSwCtx* context, std::wstring& signatureFile, const wchar_t** signatures,
                        unsigned int count);
int SW_CreateSignature(ZAVSwCtx* context, std::wstring& signatureFile, const wchar_t* signature);

}  // namespace zav
