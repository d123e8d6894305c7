#pragma once

#include <array>
#include <memory>
#include <string>

#include "core/ZAVCtx.h"
#include "hw/HWTables.h"

namespace zav {

class HWDiagnostics;

}  // namespace zav

// A hardware context. ZAV_hw_init makes it, ZAV_hw_free releases it. Opaque to hosts.
struct ZAVHwCtx {
    ZAVHwCtx() = default;
    ZAVHwCtx(const ZAVHwCtx&) = delete;
    ZAVHwCtx& operator=(const ZAVHwCtx&) = delete;

    // A logger that delivers nothing if the context has no log.
    zav::ZAVlog& logger() const { return zav::orSilent(log.get()); }

    // Releases the results of the last scan, after which there is no valid scan. Allocates no memory.
    void discardResults();

    ZAVCtx* library = nullptr;
    std::unique_ptr<zav::ZAVlog> log;
    std::unique_ptr<zav::TemporaryDir> tmpDir;  // borrows log
    std::wstring scratchFile;
    std::wstring installDir;
    std::array<unsigned char, zav::kGroupSlots> groupEnabled{};
    zav::HWTables tables;
    const zav::HWDiagnostics* diagnostics = nullptr;  // set while the output is parsed; null otherwise
    std::string failure;  // why a step of the scan failed; empty once it has been logged
    int returnCode = -1;  // the scanner's exit status; -1 while there is no valid scan
};
