#include "cli/scan/Findings.h"

#include <set>
#include <string_view>

#include "cli/scan/Codes.h"
#include "cli/scan/Metadata.h"
#include "cli/scan/Warnings.h"
#include "cli/terminal/Text.h"

namespace zavcli {

namespace {

using Results = std::vector<ZAVSwResult*>;

Results allResults(ZAVSwCtx* software) {
    ZAVSwResult** results = nullptr;
    int count = 0;
    require(ZAV_sw_get_results(software, &results, &count));
    return {results, results + count};
}

std::wstring guidOf(ZAVSwCtx* software, ZAVSwResult* result) {
    const wchar_t* guid = nullptr;
    require(ZAV_sw_get_guid(software, result, &guid));
    return guid;
}

// The library tells identifiers apart by case, which the same one may have in several ways.
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
        require(ZAV_sw_find_results_by_guid(software, spelling.c_str(), &results, &count));
        chosen.insert(chosen.end(), results, results + count);
    }
    return chosen;
}

std::vector<Field> variablesOf(ZAVSwCtx* software, ZAVSwResult* result) {
    const wchar_t** names = nullptr;
    int count = 0;
    require(ZAV_sw_get_variables(software, result, &names, &count));
    std::vector<Field> variables;
    for (int i = 0; i < count; ++i) {
        const wchar_t* value = nullptr;
        require(ZAV_sw_get_value(software, result, names[i], &value));
        variables.push_back({toUtf8(names[i]), toUtf8(value)});
    }
    return variables;
}

Finding readFinding(ZAVSwCtx* software, ZAVSwResult* result,
                    const std::map<std::string, std::string>& names) {
    const wchar_t* metadata = nullptr;
    require(ZAV_sw_get_metadata(software, result, &metadata));
    Finding finding;
    finding.guid = toUtf8(guidOf(software, result));
    finding.variables = variablesOf(software, result);
    finding.metadata = narrowBytes(metadata);
    finding.name = readMetadata(finding.metadata).name();
    const auto known = names.find(lowerCase(finding.guid));
    if (finding.name.empty() && known != names.end()) finding.name = known->second;
    return finding;
}

}  // namespace

std::vector<Finding> readFindings(ZAVSwCtx* software, const std::vector<std::string>& guids,
                                  const std::map<std::string, std::string>& names) {
    Results results;
    if (guids.empty()) results = allResults(software);
    std::set<std::string> done;
    for (const std::string& guid : guids) {
        if (!done.insert(lowerCase(guid)).second) continue;
        const Results chosen = resultsOf(software, guid);
        results.insert(results.end(), chosen.begin(), chosen.end());
    }
    std::vector<Finding> findings;
    findings.reserve(results.size());
    for (ZAVSwResult* const result : results) findings.push_back(readFinding(software, result, names));
    return findings;
}

std::size_t countFindings(ZAVSwCtx* software) {
    return allResults(software).size();
}

std::vector<Warning> readWarnings(ZAVSwCtx* software) {
    const wchar_t** texts = nullptr;
    int count = 0;
    require(ZAV_sw_get_warnings(software, &texts, &count));
    std::vector<Warning> warnings;
    warnings.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) warnings.push_back(readWarning(narrowBytes(texts[i])));
    return warnings;
}

}  // namespace zavcli
