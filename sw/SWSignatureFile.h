#pragma once

#include <string>

#include "sw/ZAVSwCtx.h"

namespace zav {

// Writes signatures, unchanged, to a new file in the context's temporary directory and stores its name. Returns 0; 3 for a
// null context; 202 when the file cannot be created, a signature is null or a write failed, the last two of which are
// logged; otherwise the error code of the request for a file name.
int SW_CreateSignatures(ZAVSwCtx* context, std::wstring& signatureFile, const wchar_t** signatures,
                        unsigned int count);
int SW_CreateSignature(ZAVSwCtx* context, std::wstring& signatureFile, const wchar_t* signature);

}  // namespace zav
