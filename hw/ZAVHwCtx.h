#pragma once

#include <array>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "core/ZAVCtx.h"
#include "hw/HWGroups.h"
#include "kest/Malloced.h"

namespace zav {

// A field of an instance. Both texts are NUL-terminated and owned by the context (see HWTexts).
struct HWField {
    const wchar_t* name;
    const wchar_t* value;
};

struct HWInstance {
    // Fills fieldNames. REQUIRES: the fields are complete. Throws std::bad_alloc.
    void makeFieldNames();

    std::vector<HWField> fields;                // in document order; a name may occur more than once
    kest::Malloced<const wchar_t*> fieldNames;  // of all fields, in their order; null without fields
};

// Owns the texts of all fields: those of the document, and the values that were joined from several text nodes.
struct HWTexts {
    std::shared_ptr<const void> document;
    std::deque<std::wstring> joined;
};

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
    std::array<std::vector<zav::HWInstance>, zav::kGroupSlots> groups;  // by group id
    zav::HWTexts texts;
    const zav::HWDiagnostics* diagnostics = nullptr;  // set while the output is parsed; null otherwise
    std::string failure;  // why a step of the scan failed; empty once it has been logged
    int returnCode = -1;  // the scanner's exit status; -1 while there is no valid scan
};
