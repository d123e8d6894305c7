#include "bench/peers/Results.h"

#include <algorithm>

namespace zavbench {

void addResult(ZAVSwCtx& context, std::unique_ptr<ZAVSwResult> result) {
    result->generateVariablesNames();
    context.results.push_back(std::move(result));
}

void finishResults(ZAVSwCtx& context) {
    context.resultsArray = kest::mallocArray<ZAVSwResult*>(context.results.size());
    std::transform(context.results.begin(), context.results.end(), context.resultsArray.get(),
                   [](const auto& result) { return result.get(); });
    context.guidResults.build(context.results);
}

}  // namespace zavbench
