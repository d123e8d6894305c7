#include "sw/SWScanner.h"

#include "intake/ScannerCommand.h"
#include "intake/ScannerProcess.h"

namespace zav {

namespace {

constexpr const char* kFunction = "SW_ExecuteScanner()";

// The exit status of a scanner that refuses the signatures.
constexpr int kSignaturesRefused = 3;

// A file that the scanner writes, with the messages for the choice of its name.
struct ResultFile {
    const wchar_t* prefix;
    const char* success;
    const char* failure;
};

constexpr ResultFile kOutput = {L"out_", "Output File: %S", "Can't create output file"};
constexpr ResultFile kWarnings = {L"warning_", "Warning file: %S", "Can't create warning file"};

int nameFile(ZAVSwCtx* context, const ResultFile& file, std::wstring& path) {
    ZAVlog& log = context->logger();
    const int code = context->tmpDir->getTmpFile(path, file.prefix, L".xml");
    if (code != 0) {
        context->failure = context->tmpDir->failureReason();
        log.traceMIN(kFunction, "%s", file.failure);
    } else {
        log.traceMAX(kFunction, file.success, path.c_str());
    }
    return code;
}

int run(ZAVSwCtx* context, const ScannerCommand& command) {
    ZAVlog& log = context->logger();
    log.traceMAX(kFunction, "Executing command: [%S]", command.line().c_str());
    ScannerProcess scanner(&log, kFunction, command.arguments(), context->installDir);
    if (!scanner.started()) {
        context->returnCode = -1;
        return ZAV_ERROR_SW_SCANNER;
    }
    context->returnCode = scanner.drain();
    const int code = scanner.check();
    if (code == 0) return ZAV_SUCCESS;
    return code == kSignaturesRefused ? ZAV_ERROR_SW_SIGNATURE : ZAV_ERROR_SW_SCANNER;
}

}  // namespace

// NOLINTBEGIN(performance-unnecessary-value-param): as its callers know it
int SW_ExecuteScanner(ZAVSwCtx* context, std::wstring configFile, std::wstring signatureFile,
                      std::wstring& warningsFile, std::wstring& outputFile) {
    // NOLINTEND(performance-unnecessary-value-param)
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    int code = nameFile(context, kOutput, outputFile);
    if (code != 0) return code;
    code = nameFile(context, kWarnings, warningsFile);
    if (code != 0) return code;
    ScannerCommand command(context->installDir + context->tmpDir->getDirectorySeparator() + L"quorvis");
    command.add(L"-c", configFile).add(L"-o", outputFile).add(L"-e", warningsFile).add(L"-i", signatureFile);
    return run(context, command);
}

}  // namespace zav
