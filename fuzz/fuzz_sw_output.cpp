// The software scanner's two files. Any bytes must be refused or give results that can be looked up and warnings that
// can be parsed again.
#include <algorithm>
#include <cstdlib>
#include <cwchar>

#include "fuzz/MemoryFile.h"
#include "include/zav.h"
#include "intake/XMLParser.h"
#include "kest/Text.h"
#include "sw/SWParser.h"

namespace {

void must(bool holds) {
    if (!holds) std::abort();
}

void checkResult(ZAVSwCtx& context, const ZAVSwResult& result) {
    const zav::SWGuidIndex::Entry* const same = context.guidResults.find(tessa::TextStore::wide(result.guid));
    must(same != nullptr && std::count(same->results, same->results + same->count, &result) == 1);
    for (std::size_t i = 0; i < result.variables.size(); ++i) {
        const zav::SWVariable& variable = result.variables[i];
        must(result.variableNames.get()[i] == variable.name);
        must(i == 0 || std::wcscmp(result.variables[i - 1].name, variable.name) < 0);
        must(result.findValue(variable.name) == variable.value);
    }
}

void checkResults(ZAVSwCtx& context, const tessa::Node* root) {
    must(zav::SW_parseOutData(&context, root) == ZAV_SUCCESS);
    for (std::size_t i = 0; i < context.results.size(); ++i) {
        must(context.resultsArray.get()[i] == context.results[i].get());
        checkResult(context, *context.results[i]);
    }
}

void checkWarnings(ZAVSwCtx& context, const tessa::Node* root) {
    must(zav::SW_parseWarnData(&context, root) == ZAV_SUCCESS);
    must(context.warnings.empty() == (context.warningsArray == nullptr));
    for (std::size_t i = 0; i < context.warnings.size(); ++i) {
        must(context.warningsArray.get()[i] == context.warnings[i].c_str());
        const std::string text = kest::narrow(context.warnings[i]);
        const zavfuzz::MemoryFile file(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
        const zav::XMLParser again(nullptr, kest::widen(file.path()).c_str());
        must(again.status == 0 && again.getRootNode()->name().compareTo(kest::String(L"Event"), 0) == 0);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const zavfuzz::MemoryFile file(data, size);
    ZAVSwCtx context;
    const zav::XMLParser parser(nullptr, kest::widen(file.path()).c_str());
    if (parser.status != 0) return 0;
    checkResults(context, parser.getRootNode());
    checkWarnings(context, parser.getRootNode());
    return 0;
}
