#include "toolkit/quorvis/evaluation/Planner.h"

#include <algorithm>

namespace toolkit::quorvis {

namespace {

bool isCheap(LeafKind kind) {
    return kind == LeafKind::Package || kind == LeafKind::File || kind == LeafKind::Compare;
}

}  // namespace

void Planner::plan(std::span<const Signature> signatures) {
    for (const Signature& signature : signatures) announceNames(signature);
    for (const Signature& signature : signatures) add(signature);
    if (!walks_.empty()) context_.tree().searchAhead(std::move(walks_));
}

void Planner::announceNames(const Signature& signature) {
    const Scope scope(presets_, signature);
    for (const Leaf& leaf : signature.leaves) {
        if (leaf.kind != LeafKind::Package) continue;
        std::string_view missing;
        const std::optional<Query> query = LeafCache::query(leaf, scope, missing);
        if (query && query->has(Attribute::NameRegex))
            context_.packages().announce(query->get(Attribute::NameRegex));
    }
}

void Planner::add(const Signature& signature) {
    const Scope scope(presets_, signature);
    for (const Detection& detection : signature.detections) {
        const bool found = std::ranges::none_of(detection.each, [&](std::size_t leaf) {
            return foresee(signature.leaves[leaf], scope) == Truth::False;
        });
        if (found && detection.match) foresee(signature, scope, *detection.match);
    }
}

Truth Planner::foresee(const Signature& signature, const Scope& scope, const Condition& condition) {
    switch (condition.kind) {
        case Condition::Kind::Leaf:
            return foresee(signature.leaves[condition.leaf], scope);
        case Condition::Kind::All:
            for (const Condition& child : condition.children) {
                if (foresee(signature, scope, child) == Truth::False) return Truth::False;
            }
            return Truth::Unknown;
        case Condition::Kind::Any:
            for (const Condition& child : condition.children) {
                if (foresee(signature, scope, child) == Truth::True) return Truth::True;
            }
            return Truth::Unknown;
        case Condition::Kind::Not:
        case Condition::Kind::Optional:
            foresee(signature, scope, condition.children.front());
            return Truth::Unknown;
    }
    return Truth::Unknown;
}

void Planner::announceContent(const Query& query) {
    // A filter searches whole files.
    if (query.has(Attribute::MaxBytes)) return;
    context_.contentFilters().announce(std::string(query.get(Attribute::Path)), query.get(Attribute::Regex),
                                       query.get(Attribute::Flags));
}

Truth Planner::foresee(const Leaf& leaf, const Scope& scope) {
    std::string_view missing;
    const std::optional<Query> query = LeafCache::query(leaf, scope, missing);
    if (!query) return Truth::Unknown;
    if (isCheap(leaf.kind)) return truthOf(leaf, leaves_.result(*query));
    if (leaf.kind == LeafKind::Glob) walks_.push_back(globRequestOf(*query));
    if (leaf.kind == LeafKind::Content) announceContent(*query);
    return Truth::Unknown;
}

}  // namespace toolkit::quorvis
