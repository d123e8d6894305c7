#include "bench/SoftwareWorks.h"

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <vector>

#include "bench/Words.h"
#include "bench/peers/DirectResults.h"
#include "bench/peers/ExpatTokens.h"
#include "bench/peers/LibxmlResults.h"
#include "include/zav.h"
#include "kest/Text.h"
#include "sw/SWParser.h"

namespace zavbench {

namespace {

using Action = std::function<bool()>;
using ResultMap = std::map<std::wstring, std::vector<ZAVSwResult*>>;

// Arguments: output file, warnings file.
Action readWithLibrary(const Arguments& arguments) {
    return [output = kest::widen(arguments.at(0)), warnings = kest::widen(arguments.at(1)),
            context = std::make_shared<ZAVSwCtx>()] {
        return zav::SW_ParseOutput(context.get(), output, warnings) == 0;
    };
}

Action readWithLibxml(const Arguments& arguments) {
    return [path = arguments.at(0), context = std::make_shared<ZAVSwCtx>()] {
        return fillResultsWithLibxml(path, *context);
    };
}

Action readResultsAlone(const Arguments& arguments) {
    return [path = arguments.at(0), context = std::make_shared<ZAVSwCtx>()] {
        return fillResultsDirectly(path, *context);
    };
}

// Contexts with the results of a file, which are looked up one after another.
struct Lookups {
    // Arguments: output file, warnings file, number of its results, number of contexts.
    explicit Lookups(const Arguments& arguments)
        : contexts(static_cast<std::size_t>(std::atoi(arguments.at(3).c_str()))) {
        const int results = std::atoi(arguments.at(2).c_str());
        for (int i = 0; i < results; ++i) guids.push_back(kest::widen(identifier(i)));
        for (ZAVSwCtx& context : contexts) {
            const int code =
                zav::SW_ParseOutput(&context, kest::widen(arguments.at(0)), kest::widen(arguments.at(1)));
            if (code != 0 || context.results.size() != guids.size()) std::abort();
        }
    }

    template <typename LookUp>
    bool all(LookUp lookUp) {
        return std::all_of(contexts.begin(), contexts.end(), [&](ZAVSwCtx& context) {
            return std::all_of(guids.begin(), guids.end(),
                               [&](const std::wstring& guid) { return lookUp(context, guid.c_str()); });
        });
    }

    std::vector<std::wstring> guids;
    std::vector<ZAVSwCtx> contexts;
};

Action findResults(const Arguments& arguments) {
    return [lookups = std::make_shared<Lookups>(arguments)] {
        return lookups->all([](ZAVSwCtx& context, const wchar_t* guid) {
            ZAVSwResult** results = nullptr;
            unsigned int count = 0;
            return ZAV_sw_find_results_by_guid(&context, guid, &results, &count) == 0 && count == 1;
        });
    };
}

Action findResult(const Arguments& arguments) {
    return [lookups = std::make_shared<Lookups>(arguments)] {
        return lookups->all([](ZAVSwCtx& context, const wchar_t* guid) {
            ZAVSwResult* result = nullptr;
            return ZAV_sw_find_result_by_guid(&context, guid, &result) == 0 && result != nullptr;
        });
    };
}

// The peer of find_results_by_guid: results by identifier in a map that is filled on demand.
Action findInMap(const Arguments& arguments) {
    const auto lookups = std::make_shared<Lookups>(arguments);
    return [lookups, maps = std::make_shared<std::map<ZAVSwCtx*, ResultMap>>()] {
        return lookups->all([&maps](ZAVSwCtx& context, const wchar_t* guid) {
            std::vector<ZAVSwResult*>& found = (*maps)[&context][guid];
            if (found.empty()) found.push_back(context.guidResults.first(guid));
            return found.front() != nullptr;
        });
    };
}

}  // namespace

std::map<std::string, Work> softwareWorks() {
    return {{"sw-read", readWithLibrary},     {"sw-read-libxml", readWithLibxml},
            {"sw-results", readResultsAlone}, {"sw-find-results", findResults},
            {"sw-find-result", findResult},   {"sw-find-in-map", findInMap}};
}

}  // namespace zavbench
