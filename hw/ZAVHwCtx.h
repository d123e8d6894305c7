#pragma once

#include <array>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "core/ZAVCtx.h"
#include "hw/HWGroups.h"

namespace zav {

// A field of an instance. Both texts are NUL-terminated and belong to the context (see HWTexts).
struct HWField {
    const wchar_t* name;
    const wchar_t* value;
};

// The fields of one instance in document order; a name may occur more than once.
using HWInstance = std::vector<HWField>;

// What the texts of all fields stand in: the document that they were read from, and the values that were put
// together from several pieces of text.
struct HWTexts {
    std::shared_ptr<const void> document;
    std::deque<std::wstring> joined;
};

class HWFaults;

using HWFieldNames = std::map<int, std::vector<const wchar_t**>>;

// Releases every array of field names and empties the group's vectors; the map then has an entry for every
// id.
void HW_cleanFields(HWFieldNames& fieldNames);

}  // namespace zav

// A hardware context: made by ZAV_hw_init, released by ZAV_hw_free, opaque to hosts.
struct ZAVHwCtx {
    ZAVHwCtx() = default;
    ~ZAVHwCtx();
    ZAVHwCtx(const ZAVHwCtx&) = delete;
    ZAVHwCtx& operator=(const ZAVHwCtx&) = delete;

    // Forgets the results: both maps then hold an empty vector for every group, and there is no valid scan.
    // Needs no memory but for the first time.
    void discardResults();

    ZAVCtx* library = nullptr;
    std::unique_ptr<zav::ZAVlog> log;
    std::unique_ptr<zav::TemporaryDir> tmpDir;  // borrows log
    std::wstring scratchFile;
    std::wstring installDir;
    std::array<unsigned char, zav::kGroupSlots> groupEnabled{};
    std::map<int, std::vector<zav::HWInstance>> groups;
    zav::HWFieldNames fieldNames;  // per instance an array from malloc, null for an instance without fields
    zav::HWTexts texts;
    const zav::HWFaults* faults = nullptr;  // while output is read; else faults are not told with their place
    std::string trouble;                    // why a step of the scan failed; empty when that has been told
    int returnCode = -1;                    // -1 while there is no valid scan, else the scanner's status
};
