#include "hw/ZAVHwCtx.h"

#include <algorithm>

#include "core/Guard.h"

namespace zav {

namespace {

constexpr int kHardwareComponent = 3;
constexpr const char* kInit = "ZAV_hw_init";

int initialise(ZAVCtx* library, ZAVlogCallback callback, void* userData, ZAVHwCtx** contextOut) {
    auto context = std::make_unique<ZAVHwCtx>();
    context->library = library;
    context->installDir = library->homeDir;
    context->log = std::make_unique<ZAVlog>(kHardwareComponent, callback, userData);
    ZAVlog& log = context->logger();
    context->tmpDir = std::make_unique<TemporaryDir>(&log, library->tempDir->getBasePath());
    context->discardResults();
    if (context->tmpDir->init(L"quorvah") != 0) {
        log.traceMAX(kInit, "Can't create temporary DIR: %S", context->tmpDir->parentPath().c_str());
    }
    if (context->tmpDir->getTmpFile(context->scratchFile, L"hw_", L".xml") != 0) {
        log.traceMAX(kInit, "Error in TMP file creation: %S", context->scratchFile.c_str());
    }
    *contextOut = context.release();
    return ZAV_SUCCESS;
}

int setOption(ZAVHwCtx* context, int option, unsigned char value) {
    constexpr const char* kFunction = "ZAV_hw_setopt";
    const char* const text = value == 1 ? "true" : "false";
    ZAVlog& log = context->logger();
    if (option == 0) {
        log.traceMAX(kFunction, "Setting all opts: [%s]", text);
        context->groupEnabled.fill(value);
    } else {
        log.traceMAX(kFunction, "Setting opt: [%d=%s]", option, text);
        context->groupEnabled.at(static_cast<std::size_t>(option)) = value;
    }
    context->returnCode = -1;
    return ZAV_SUCCESS;
}

// Releases everything even if the callback throws.
int release(ZAVHwCtx* context) {
    const std::unique_ptr<ZAVHwCtx> owner(context);
    int told = ZAV_SUCCESS;
    if (context->tmpDir != nullptr) {
        context->tmpDir->deleteFiles(true);
        told = context->tmpDir->close();
        context->tmpDir.reset();
    }
    const int goodbye =
        catchAll([context] { context->logger().traceMAX("ZAV_hw_free", "Deleting logger 0, last call"); });
    return std::max(told, goodbye);
}

}  // namespace
}  // namespace zav

void ZAVHwCtx::discardResults() {
    returnCode = -1;
    tables.clear();
}

int ZAV_hw_init(ZAVCtx* library, ZAVlogCallback callback, void* userData, ZAVHwCtx** context) {
    if (library == nullptr) return ZAV_ERROR_CONTEXT;
    if (context == nullptr) return ZAV_ERROR_HW_POINTER;
    const int code = zav::guarded([&] { return zav::initialise(library, callback, userData, context); });
    if (code != ZAV_SUCCESS) *context = nullptr;
    return code;
}

int ZAV_hw_setopt(ZAVHwCtx* context, int option, unsigned char value) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    if (value > 1) return ZAV_ERROR_OPTION;
    if (option != 0 && !zav::isGroupId(option)) return ZAV_ERROR_HW_GROUP;
    return zav::guarded([&] { return zav::setOption(context, option, value); });
}

int ZAV_hw_free(ZAVHwCtx* context) {
    if (context == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([context] { return zav::release(context); });
}
