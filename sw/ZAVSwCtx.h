#pragma once

#include <deque>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "core/ZAVCtx.h"
#include "sw/SWGuidIndex.h"
#include "sw/ZAVSwResult.h"

namespace zav {

struct SWPreset {
    std::wstring value;
    std::wstring scope;
};

// Attribute and value of each setting of a plug-in, in the order in which they were set.
using SWSettings = std::vector<std::pair<std::wstring, std::wstring>>;

// What the texts of all results stand in: the documents that they were read from, and the metadata.
struct SWTexts {
    std::vector<std::shared_ptr<const void>> documents;
    std::deque<std::wstring> metadata;
};

}  // namespace zav

// A software context: made by ZAV_sw_init, released by ZAV_sw_free, opaque to hosts.
struct ZAVSwCtx {
    ZAVSwCtx() = default;
    ZAVSwCtx(const ZAVSwCtx&) = delete;
    ZAVSwCtx& operator=(const ZAVSwCtx&) = delete;

    // Never missing: messages of a context without a log are dropped.
    zav::ZAVlog& logger() const { return zav::orSilent(log.get()); }

    ZAVCtx* library = nullptr;
    std::unique_ptr<zav::ZAVlog> log;
    std::unique_ptr<zav::TemporaryDir> tmpDir;  // borrows log
    std::wstring installDir;
    std::string trouble;  // why a step of the evaluation failed; empty when that has been told
    int returnCode = -1;  // -1 while there are no valid results, else the scanner's status
    std::map<std::wstring, zav::SWPreset> variables;
    std::map<std::wstring, zav::SWSettings> pluginConfigs;

    // The results; the arrays are what hosts are handed, null when there is nothing to hand out.
    std::vector<std::unique_ptr<ZAVSwResult>> results;
    zav::SWTexts texts;
    zav::SWGuidIndex guidResults;
    std::vector<std::wstring> warnings;
    kest::Malloced<const wchar_t*> warningsArray;
    kest::Malloced<ZAVSwResult*> resultsArray;
};
