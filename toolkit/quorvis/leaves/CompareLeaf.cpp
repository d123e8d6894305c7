#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

LeafResult lookUpCompare(const Query& query, EvaluationContext& /*context*/) {
    LeafResult result;
    // An item without values stands for a comparison that holds.
    if (passesVersionTests(query, Scheme::Dotted, query.get(Attribute::Left), {}, result))
        result.items.emplace_back();
    return result;
}

}  // namespace toolkit::quorvis
