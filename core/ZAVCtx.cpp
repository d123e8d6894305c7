#include "core/ZAVCtx.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "core/Guard.h"
#include "core/ZAVlocation.h"

namespace {

constexpr const char* kVersion = "11/03/03zav_2.7.0.0006";
constexpr int kLibraryComponent = 1;

int initialise(const char* exploiterName, ZAVlogCallback callback, void* userData, const wchar_t* tempDir,
               const wchar_t* zavDir, ZAVCtx** handleOut) {
    std::unique_ptr<ZAVCtx> handle(new (std::nothrow) ZAVCtx);
    if (handle == nullptr) return ZAV_ERROR_MEMORY;
    handle->exploiterName.reset(strdup(exploiterName));
    if (handle->exploiterName == nullptr) return ZAV_ERROR_MEMORY;
    handle->log.reset(new (std::nothrow) zav::ZAVlog(kLibraryComponent, callback, userData));
    if (handle->log == nullptr) return ZAV_ERROR_LOGGER;
    zav::ZAVlog& log = *handle->log;

    // Hosts expect "init OK" as the first message, whatever the result of the steps below.
    log.traceMAX("ZAV_init", "init OK, Exploiter: [%s] Version: [%s] ZAV DIR[%S]",
                 handle->exploiterName.get(), kVersion, zavDir != nullptr ? zavDir : L"(null)");

    handle->tempDir = std::make_unique<zav::TemporaryDir>(&log, tempDir);
    const int code = handle->tempDir->init(L"zav_");
    zav::ZAVlocation location(&log, exploiterName, zavDir);
    handle->homeDir = location.getLocation();
    if (location.isRegistered() == 0) log.traceMIN("ZAV_init", "Exploiter not correctly registered");
    if (handle->homeDir.empty()) {
        log.traceMIN("ZAV_init", "ZAV not installed, please specify a directory");
    }
    if (code != ZAV_SUCCESS) {
        std::string failure = handle->tempDir->failureReason();
        log.reportFailure("ZAV_init", failure);
        // The host has no handle whose end could be logged.
        handle->tempDir->silence();
        return code;
    }
    *handleOut = handle.release();
    return ZAV_SUCCESS;
}

// Releases everything even if the callback throws. The handle itself stays allocated when the code is not 0.
int release(ZAVCtx* handle) {
    int told = zav::catchAll([handle] {
        zav::orSilent(handle->log.get())
            .traceMAX("ZAV_free", "Deinit for exploiter: [%s]", handle->exploiterName.get());
    });
    int code = ZAV_ERROR_EXPLOITER;
    if (handle->exploiterName != nullptr) {
        handle->exploiterName.reset();
        code = ZAV_SUCCESS;
        if (handle->tempDir != nullptr) {
            code = handle->tempDir->deleteFiles(true);
            told = std::max(told, handle->tempDir->close());
            handle->tempDir.reset();
        }
    }
    handle->log.reset();
    if (code != ZAV_SUCCESS) return code;
    delete handle;
    return told;
}

}  // namespace

int ZAV_init(const char* exploiterName, ZAVlogCallback callback, void* userData, const wchar_t* tempDir,
             const wchar_t* zavDir, ZAVCtx** handle) {
    if (exploiterName == nullptr) return ZAV_ERROR_EXPLOITER;
    if (handle == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded(
        [&] { return initialise(exploiterName, callback, userData, tempDir, zavDir, handle); });
}

int ZAV_free(ZAVCtx* handle) {
    if (handle == nullptr) return ZAV_ERROR_CONTEXT;
    return zav::guarded([handle] { return release(handle); });
}
