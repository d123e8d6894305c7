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
#include "tessa/TextStore.h"

namespace zav {

struct SWPreset {
    std::wstring value;
    std::wstring scope;
};

// The settings of a plug-in, as pairs of attribute and value in the order in which they were added.
using SWSettings = std::vector<std::pair<std::wstring, std::wstring>>;

// Owns the texts of all results: those of the documents, and the metadata.
struct SWTexts {
    std::vector<std::shared_ptr<tessa::TextStore>> documents;
    std::deque<std::wstring> metadata;
};

}  // namespace zav

// A software context. ZAV_sw_init makes it, ZAV_sw_free releases it. Opaque to hosts.
struct ZAVSwCtx {
    ZAVSwCtx() = default;
    ZAVSwCtx(const ZAVSwCtx&) = delete;
    ZAVSwCtx& operator=(const ZAVSwCtx&) = delete;

    // A logger that delivers nothing if the context has no log.
    zav::ZAVlog& logger() const { return zav::orSilent(log.get()); }

    ZAVCtx* library = nullptr;
    std::unique_ptr<zav::ZAVlog> log;
    std::unique_ptr<zav::TemporaryDir> tmpDir;  // borrows log
    std::wstring installDir;
    std::string failure;  // why a step of the evaluation failed; empty once it has been logged
    int returnCode = -1;  // the scanner's exit status; -1 while there are no valid results
    std::map<std::wstring, zav::SWPreset> variables;
    std::map<std::wstring, zav::SWSettings> pluginConfigs;

    // The results. The getters return the arrays, which are null when they would be empty.
    std::vector<std::unique_ptr<ZAVSwResult>> results;
    zav::SWTexts texts;
    zav::SWGuidIndex guidResults;
    std::vector<std::wstring> warnings;
    kest::Malloced<const wchar_t*> warningsArray;
    kest::Malloced<ZAVSwResult*> resultsArray;
};

namespace zav {

// Releases all results and warnings and everything that the getters have returned. There are no valid results after that.
// Does nothing for null. Allocates no memory.
void SW_deleteResults(ZAVSwCtx* context);

}  // namespace zav
