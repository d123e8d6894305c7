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

// A field of an instance. Both texts are NUL-terminated and belong to the context (see HWTexts).
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

// What the texts of all fields stand in: the document that they were read from, and the values that were put
// together from several pieces of text.
struct HWTexts {
    std::shared_ptr<const void> document;
    std::deque<std::wstring> joined;
};

class HWFaults;

}  // namespace zav

// A hardware context: made by ZAV_hw_init, released by ZAV_hw_free, opaque to hosts.
struct ZAVHwCtx {
    ZAVHwCtx() = default;
    ZAVHwCtx(const ZAVHwCtx&) = delete;
    ZAVHwCtx& operator=(const ZAVHwCtx&) = delete;

    // Never missing: messages of a context without a log are dropped.
    zav::ZAVlog& logger() const { return zav::orSilent(log.get()); }

    // Releases the results of the last scan; there is no valid scan then. Needs no memory.
    void discardResults();

    ZAVCtx* library = nullptr;
    std::unique_ptr<zav::ZAVlog> log;
    std::unique_ptr<zav::TemporaryDir> tmpDir;  // borrows log
    std::wstring scratchFile;
    std::wstring installDir;
    std::array<unsigned char, zav::kGroupSlots> groupEnabled{};
    std::array<std::vector<zav::HWInstance>, zav::kGroupSlots> groups;  // by group id
    zav::HWTexts texts;
    const zav::HWFaults* faults = nullptr;  // while output is read; else faults are not told with their place
    std::string trouble;                    // why a step of the scan failed; empty when that has been told
    int returnCode = -1;                    // -1 while there is no valid scan, else the scanner's status
};
