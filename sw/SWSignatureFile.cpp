#include "sw/SWSignatureFile.h"

#include <algorithm>

#include "core/NewFile.h"
#include "sw/SWConfigFile.h"

namespace zav {

namespace {

constexpr const char* kFunction = "SW_CreateSignatures()";

bool writeSignatures(ZAVSwCtx* context, FILE* file, const wchar_t** signatures, unsigned int count) {
    const wchar_t** const end = signatures == nullptr ? nullptr : signatures + count;
    return SW_writeData(context, file, "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n") &&
           SW_writeData(context, file, "<Signatures>\n") &&
           std::all_of(signatures, end,
                       [=](const wchar_t* text) { return SW_writeData(context, file, text); }) &&
           SW_writeData(context, file, "</Signatures>\n");
}

}  // namespace

int SW_CreateSignatures(ZAVSwCtx* context, std::wstring& signatureFile, const wchar_t** signatures,
                        unsigned int count) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    ZAVlog& log = context->logger();
    const int named = context->tmpDir->getTmpFile(signatureFile, L"sig_", L".xml");
    log.traceMAX(kFunction, "Creating a signature file [%S]", signatureFile.c_str());
    const auto writing = [=](FILE* file) { return writeSignatures(context, file, signatures, count); };
    const WriteResult written = writeNewFile(signatureFile, writing, context->failure);
    if (written == WriteResult::kComplete) return named;
    if (written == WriteResult::kFailed) {
        log.traceMIN(kFunction, "Error during write [%S]", signatureFile.c_str());
    }
    return ZAV_ERROR_SW_SIGNATURE;
}

int SW_CreateSignature(ZAVSwCtx* context, std::wstring& signatureFile, const wchar_t* signature) {
    return SW_CreateSignatures(context, signatureFile, &signature, 1);
}

}  // namespace zav
