#include "cli/scan/SoftwareResults.h"

#include <set>
#include <string_view>

#include "cli/scan/ErrorMessages.h"
#include "cli/scan/ResultMetadata.h"
#include "cli/scan/Warnings.h"
#include "cli/terminal/TextEncoding.h"

namespace zavcli {

namespace {

using Results = std::vector<ZAVSwResult*>;

Results allResults(ZAVSwCtx* software) {
    ZAVSwResult** results = nullptr;
    int count = 0;
    requireSuccess(ZAV_sw_get_results(software, &results, &count));
    return {results, results + count};
}

std::wstring guidOf(ZAVSwCtx* software, ZAVSwResult* result) {
    const wchar_t* guid = nullptr;
    requireSuccess(ZAV_sw_get_guid(software, result, &guid));
    return guid;
}

// The library looks identifiers up case-sensitively, so every spelling in the results is looked up.
Results resultsOf(ZAVSwCtx* software, const std::string& guid) {
    std::set<std::wstring> spellings;
    for (ZAVSwResult* const result : allResults(software)) {
        std::wstring spelling = guidOf(software, result);
        if (lowerCase(toUtf8(spelling)) == lowerCase(guid)) spellings.insert(std::move(spelling));
    }
    Results chosen;
    for (const std::wstring& spelling : spellings) {
        ZAVSwResult** results = nullptr;
        unsigned int count = 0;
        requireSuccess(ZAV_sw_find_results_by_guid(software, spelling.c_str(), &results, &count));
        chosen.insert(chosen.end(), results, results + count);
    }
    return chosen;
}

std::vector<Field> variablesOf(ZAVSwCtx* software, ZAVSwResult* result) {
    const wchar_t** names = nullptr;
    int count = 0;
    requireSuccess(ZAV_sw_get_variables(software, result, &names, &count));
    std::vector<Field> variables;
    for (int i = 0; i < count; ++i) {
        const wchar_t* value = nullptr;
        requireSuccess(ZAV_sw_get_value(software, result, names[i], &value));
        variables.push_back({toUtf8(names[i]), toUtf8(value)});
    }
    return variables;
}

MatchedSignature readMatch(ZAVSwCtx* software, ZAVSwResult* result,
                           const std::map<std::string, std::string>& names) {
    const wchar_t* metadata = nullptr;
    requireSuccess(ZAV_sw_get_metadata(software, result, &metadata));
    MatchedSignature match;
    match.guid = toUtf8(guidOf(software, result));
    match.variables = variablesOf(software, result);
    match.metadata = narrowBytes(metadata);
    match.name = readMetadata(match.metadata).name();
    const auto known = names.find(lowerCase(match.guid));
    if (match.name.empty() && known != names.end()) match.name = known->second;
    return match;
}

}  // namespace

std::vector<MatchedSignature> readMatches(ZAVSwCtx* software, const std::vector<std::string>& guids,
                                          const std::map<std::string, std::string>& names) {
    Results results;
    if (guids.empty()) results = allResults(software);
    std::set<std::string> done;
    for (const std::string& guid : guids) {
        if (!done.insert(lowerCase(guid)).second) continue;
        const Results chosen = resultsOf(software, guid);
        results.insert(results.end(), chosen.begin(), chosen.end());
    }
    std::vector<MatchedSignature> matches;
    matches.reserve(results.size());
    for (ZAVSwResult* const result : results) matches.push_back(readMatch(software, result, names));
    return matches;
}

std::size_t countMatches(ZAVSwCtx* software) {
    return allResults(software).size();
}

std::vector<Warning> readWarnings(ZAVSwCtx* software) {
    const wchar_t** texts = nullptr;
    int count = 0;
    requireSuccess(ZAV_sw_get_warnings(software, &texts, &count));
    std::vector<Warning> warnings;
    warnings.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) warnings.push_back(readWarning(narrowBytes(texts[i])));
    return warnings;
}

}  // namespace zavcli
