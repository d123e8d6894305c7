// ZAV_hw_run: one hardware scan.
#include "core/Guard.h"
#include "hw/HWConfigFile.h"
#include "hw/HWDiagnostics.h"
#include "hw/HWParser.h"
#include "hw/HWPlainOutput.h"
#include "hw/ZAVHwCtx.h"
#include "intake/ScannerCommand.h"
#include "intake/ScannerProcess.h"
#include "intake/XMLParser.h"

namespace zav {

namespace {

constexpr const char* kFunction = "ZAV_hw_run";

// Logs the reason of a failed step unless the step has logged it itself.
void reportFailure(ZAVHwCtx* context) {
    context->logger().reportFailure(kFunction, context->failure);
}

// A name for a file that is exchanged with the scanner. It is empty when no name is available; opening the file fails
// then.
std::wstring newFileName(ZAVHwCtx* context, const wchar_t* prefix) {
    std::wstring path;
    if (context->tmpDir->getTmpFile(path, prefix, L".xml") != 0)
        context->failure = context->tmpDir->failureReason();
    return path;
}

int runScanner(ZAVHwCtx* context, const std::wstring& config, const std::wstring& output) {
    ZAVlog& log = context->logger();
    ScannerCommand command(context->installDir + context->tmpDir->getDirectorySeparator() + L"quorvah");
    command.add(L"-c", config).add(L"-o", output);
    log.traceMAX(kFunction, "Executing ZAV [%S]", command.line().c_str());
    ScannerProcess scanner(&log, kFunction, command.arguments(), context->installDir);
    if (!scanner.started()) return ZAV_ERROR_HW_SCANNER;
    context->returnCode = scanner.drain();
    return scanner.check() == 0 ? ZAV_SUCCESS : ZAV_ERROR_HW_SCANNER;
}

int readOutput(ZAVHwCtx* context, const std::wstring& output) {
    ZAVlog& log = context->logger();
    log.traceMAX(kFunction, "Parsing XML file");
    try {
        const int instances = HW_readPlainOutput(context, output);
        if (instances >= 0) {
            HW_reportInstances(context, instances);
            return ZAV_SUCCESS;
        }
    } catch (const tessa::Fault& fault) {
        XMLParser::reportFault(&log, kest::String(output), fault);
        return ZAV_ERROR_HW_OUTPUT;
    }
    const XMLParser parser(&log, output.c_str());
    if (parser.status > 0) return ZAV_ERROR_HW_OUTPUT;
    const HWDiagnostics diagnostics(context, parser, output);
    return HW_parseHWData(context, parser.getRootNode());
}

int scan(ZAVHwCtx* context) {
    ZAVlog& log = context->logger();
    const std::wstring config = newFileName(context, L"config");
    context->discardResults();
    log.traceMAX(kFunction, "Generating config file: [%S]", config.c_str());
    const int written = HW_generateHWConfigFile(context, config.c_str());
    if (written != ZAV_SUCCESS) {
        reportFailure(context);
        log.traceMIN(kFunction, "Config file creation error");
        return written;
    }
    const std::wstring output = newFileName(context, L"out_");
    reportFailure(context);
    const int ran = runScanner(context, config, output);
    if (ran != ZAV_SUCCESS) return ran;
    return readOutput(context, output);
}

// An aborted scan leaves no results, not even those of the previous scan.
int scanOrDiscard(ZAVHwCtx* context) {
    const int code = catchAll([context] { return scan(context); });
    if (code == ZAV_ERROR_MEMORY) context->discardResults();
    return code;
}

}  // namespace
}  // namespace zav

int ZAV_hw_run(ZAVHwCtx* context) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([context] { return zav::scanOrDiscard(context); });
}
