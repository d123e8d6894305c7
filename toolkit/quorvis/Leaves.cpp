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

std::optional<Query> Leaves::query(const Leaf& leaf, const Scope& scope, std::string_view& missing) {
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
    std::unique_ptr<const LeafResult>& slot = results_[query.key()];
    if (slot == nullptr) slot = std::make_unique<const LeafResult>(lookUp(query, machine_));
    if (isConstant(query.leaf())) known_.emplace(&query.leaf(), slot.get());
    return *slot;
}

const LeafResult* Leaves::known(const Leaf& leaf) const {
    const auto found = known_.find(&leaf);
    return found == known_.end() ? nullptr : found->second;
}

Truth truthOf(const Leaf& leaf, const LeafResult& result) {
    const std::size_t count = result.items.size();
    if (count >= leaf.min && count <= leaf.max) return Truth::True;
    return result.incomplete ? Truth::Unknown : Truth::False;
}

}  // namespace toolkit::quorvis
