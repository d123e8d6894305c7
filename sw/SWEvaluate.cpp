// The three evaluations. They differ in where the signatures come from, and in the codes for files that could
// not be written: ZAV_sw_evaluate_multi alone hands on what the writers return.
#include "core/Guard.h"
#include "sw/SWConfigFile.h"
#include "sw/SWParser.h"
#include "sw/SWQueries.h"
#include "sw/SWScanner.h"
#include "sw/SWSignatureFile.h"

namespace zav {

namespace {

int scan(ZAVSwCtx* context, const std::wstring& configFile, const std::wstring& signatureFile) {
    std::wstring warningsFile;
    std::wstring outputFile;
    const int code = SW_ExecuteScanner(context, configFile, signatureFile, warningsFile, outputFile);
    return code != ZAV_SUCCESS ? code : SW_ParseOutput(context, outputFile, warningsFile);
}

int evaluate(ZAVSwCtx* context, const wchar_t* signature) {
    SW_deleteResults(context);
    std::wstring configFile;
    if (SW_CreateConfigFile(context, configFile) != ZAV_SUCCESS) return ZAV_ERROR_SW_CONFIG;
    std::wstring signatureFile;
    if (SW_CreateSignature(context, signatureFile, signature) != ZAV_SUCCESS) return ZAV_ERROR_SW_CONFIG;
    return scan(context, configFile, signatureFile);
}

int evaluateMulti(ZAVSwCtx* context, const wchar_t** signatures, unsigned int count) {
    SW_deleteResults(context);
    std::wstring configFile;
    int code = SW_CreateConfigFile(context, configFile);
    if (code != ZAV_SUCCESS) return code;
    std::wstring signatureFile;
    code = SW_CreateSignatures(context, signatureFile, signatures, count);
    if (code != ZAV_SUCCESS) return code;
    return scan(context, configFile, signatureFile);
}

int evaluateFile(ZAVSwCtx* context, const wchar_t* signatureFile) {
    SW_deleteResults(context);
    std::wstring configFile;
    if (SW_CreateConfigFile(context, configFile) != ZAV_SUCCESS) return ZAV_ERROR_SW_CONFIG;
    return scan(context, configFile, signatureFile);
}

// An evaluation that was broken off leaves no results: what was read of them is not ready for the getters.
template <class Evaluation>
int wholeOrNothing(ZAVSwCtx* context, Evaluation evaluation) {
    return guarded([&] {
        const int code = caught(evaluation);
        if (code == ZAV_ERROR_MEMORY) SW_deleteResults(context);
        return code;
    });
}

}  // namespace
}  // namespace zav

int ZAV_sw_evaluate(ZAVSwCtx* context, const wchar_t* signature) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    if (signature == nullptr) return ZAV_ERROR_SW_SIGNATURE;
    return zav::wholeOrNothing(context, [&] { return zav::evaluate(context, signature); });
}

int ZAV_sw_evaluate_multi(ZAVSwCtx* context, const wchar_t** signatures, unsigned int count) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    if (signatures == nullptr) return ZAV_ERROR_SW_SIGNATURE;
    return zav::wholeOrNothing(context, [&] { return zav::evaluateMulti(context, signatures, count); });
}

int ZAV_sw_evaluate_file(ZAVSwCtx* context, const wchar_t* signatureFile) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    if (signatureFile == nullptr) return ZAV_ERROR_SW_SIGNATURE;
    return zav::wholeOrNothing(context, [&] { return zav::evaluateFile(context, signatureFile); });
}
