#include "toolkit/quorvis/leaves/ValueTests.h"

namespace toolkit::quorvis {

LeafResult lookUpCompare(const Query& query, EvaluationContext& /*context*/) {
    LeafResult result;
    // A comparison that holds gives an item without values.
    if (passesVersionTests(query, Scheme::Dotted, query.get(Attribute::Left), {}, result))
        result.items.emplace_back();
    return result;
}

}  // namespace toolkit::quorvis
