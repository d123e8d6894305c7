#include "toolkit/quorvis/leaves/ReadingLeaf.h"

namespace toolkit::quorvis {

LeafResult lookUpCompare(const Query& query, Machine& /*machine*/) {
    LeafResult result;
    // An item without values stands for a comparison that holds.
    if (passesVersion(query, Scheme::Dotted, query.get(Attribute::Left), {}, result))
        result.items.emplace_back();
    return result;
}

}  // namespace toolkit::quorvis
