// The three evaluations. They differ in the source of the signatures and in the codes for files that could not be
// written: only ZAV_sw_evaluate_multi returns the codes of the functions that write them. The host's argument may be a
// text of the old results, so these are deleted after the argument has been used.
#include "core/Guard.h"
#include "sw/SWConfigFile.h"
#include "sw/SWParser.h"
#include "sw/SWScanner.h"
#include "sw/SWSignatureFile.h"

namespace zav {

namespace {

// Logs the reason of a failed step under that step's name, and returns the step's code.
int reported(ZAVSwCtx* context, const char* function, int code) {
    context->logger().reportFailure(function, context->failure);
    return code;
}

int createConfigFile(ZAVSwCtx* context, std::wstring& configFile) {
    return reported(context, "SW_CreateConfigFile()", SW_CreateConfigFile(context, configFile));
}

int createSignatures(ZAVSwCtx* context, std::wstring& signatureFile, const wchar_t** signatures,
                     unsigned int count) {
    return reported(context, "SW_CreateSignatures()",
                    SW_CreateSignatures(context, signatureFile, signatures, count));
}

int scan(ZAVSwCtx* context, const std::wstring& configFile, const std::wstring& signatureFile) {
    std::wstring warningsFile;
    std::wstring outputFile;
    const int code =
        reported(context, "SW_ExecuteScanner()",
                 SW_ExecuteScanner(context, configFile, signatureFile, warningsFile, outputFile));
    return code != ZAV_SUCCESS ? code : SW_ParseOutput(context, outputFile, warningsFile);
}

int write(ZAVSwCtx* context, std::wstring& configFile, std::wstring& signatureFile,
          const wchar_t* signature) {
    if (createConfigFile(context, configFile) != ZAV_SUCCESS) return ZAV_ERROR_SW_CONFIG;
    const int code = createSignatures(context, signatureFile, &signature, 1);
    return code == ZAV_SUCCESS ? ZAV_SUCCESS : ZAV_ERROR_SW_CONFIG;
}

int writeMulti(ZAVSwCtx* context, std::wstring& configFile, std::wstring& signatureFile,
               const wchar_t** signatures, unsigned int count) {
    const int code = createConfigFile(context, configFile);
    return code != ZAV_SUCCESS ? code : createSignatures(context, signatureFile, signatures, count);
}

int evaluate(ZAVSwCtx* context, const wchar_t* signature) {
    std::wstring configFile;
    std::wstring signatureFile;
    const int written = write(context, configFile, signatureFile, signature);
    SW_deleteResults(context);
    return written != ZAV_SUCCESS ? written : scan(context, configFile, signatureFile);
}

int evaluateMulti(ZAVSwCtx* context, const wchar_t** signatures, unsigned int count) {
    std::wstring configFile;
    std::wstring signatureFile;
    const int written = writeMulti(context, configFile, signatureFile, signatures, count);
    SW_deleteResults(context);
    return written != ZAV_SUCCESS ? written : scan(context, configFile, signatureFile);
}

int evaluateFile(ZAVSwCtx* context, const wchar_t* path) {
    const std::wstring signatureFile = path;
    SW_deleteResults(context);
    std::wstring configFile;
    if (createConfigFile(context, configFile) != ZAV_SUCCESS) return ZAV_ERROR_SW_CONFIG;
    return scan(context, configFile, signatureFile);
}

// An aborted evaluation leaves no results, as those read so far are not ready for the getters.
template <class Evaluation>
int evaluateOrDiscard(ZAVSwCtx* context, Evaluation evaluation) {
    return guarded([&] {
        const int code = catchAll(evaluation);
        if (code == ZAV_ERROR_MEMORY) SW_deleteResults(context);
        return code;
    });
}

}  // namespace
}  // namespace zav

int ZAV_sw_evaluate(ZAVSwCtx* context, const wchar_t* signature) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    if (signature == nullptr) return ZAV_ERROR_SW_SIGNATURE;
    return zav::evaluateOrDiscard(context, [&] { return zav::evaluate(context, signature); });
}

int ZAV_sw_evaluate_multi(ZAVSwCtx* context, const wchar_t** signatures, unsigned int count) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    if (signatures == nullptr) return ZAV_ERROR_SW_SIGNATURE;
    return zav::evaluateOrDiscard(context, [&] { return zav::evaluateMulti(context, signatures, count); });
}

int ZAV_sw_evaluate_file(ZAVSwCtx* context, const wchar_t* signatureFile) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    if (signatureFile == nullptr) return ZAV_ERROR_SW_SIGNATURE;
    return zav::evaluateOrDiscard(context, [&] { return zav::evaluateFile(context, signatureFile); });
}
