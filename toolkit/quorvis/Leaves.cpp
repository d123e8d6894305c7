#include "toolkit/quorvis/Leaves.h"

#include <algorithm>

namespace toolkit::quorvis {

namespace {

Quoting quotingOf(Attribute attribute) {
    switch (attribute) {
        case Attribute::Regex:
        case Attribute::ArgsRegex:
        case Attribute::NameRegex:
            return Quoting::Regex;
        case Attribute::Pattern:
        case Attribute::Exclude:
            return Quoting::Pattern;
        default:
            return Quoting::None;
    }
}

bool isConstant(const Leaf& leaf) {
    return std::ranges::all_of(leaf.attributes,
                               [](const LeafAttribute& attribute) { return attribute.value.constant(); });
}

}  // namespace

void Leaves::expect(std::span<const Signature> signatures) {
    std::size_t count = 0;
    for (const Signature& signature : signatures) count += signature.leaves.size();
    results_.reserve(count);
    known_.resize(count);
}

std::optional<Query> Leaves::query(const Leaf& leaf, const Scope& scope, std::string_view& missing) {
    if (isConstant(leaf)) return Query(leaf);
    std::vector<std::string> values;
    values.reserve(leaf.attributes.size());
    for (const LeafAttribute& attribute : leaf.attributes) {
        std::optional<std::string> value =
            expand(attribute.value, scope, quotingOf(attribute.attribute), missing);
        if (!value) return std::nullopt;
        values.push_back(std::move(*value));
    }
    return Query(leaf, std::move(values));
}

const LeafResult& Leaves::result(const Query& query) {
    const LeafResult*& result = results_[query];
    if (result == nullptr) result = keep(lookUp(query, machine_));
    const std::size_t number = query.leaf().number;
    if (number < known_.size() && isConstant(query.leaf())) known_[number] = result;
    return *result;
}

const LeafResult* Leaves::keep(LeafResult result) {
    const bool nothing = result.items.empty() && result.events.empty() && !result.incomplete;
    return nothing ? &nothing_ : &kept_.emplace_back(std::move(result));
}

const LeafResult* Leaves::known(const Leaf& leaf) const {
    return leaf.number < known_.size() ? known_[leaf.number] : nullptr;
}

Truth truthOf(const Leaf& leaf, const LeafResult& result) {
    const std::size_t count = result.items.size();
    if (count >= leaf.min && count <= leaf.max) return Truth::True;
    return result.incomplete ? Truth::Unknown : Truth::False;
}

}  // namespace toolkit::quorvis
