#include "toolkit/quorvis/leaves/LeafCache.h"

#include <algorithm>
#include <limits>

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

constexpr std::uint64_t kMaxHeldBytes = std::uint64_t{24} << 20;
constexpr std::uint64_t kOverhead = 200;  // estimated bytes of a query or an item besides its texts

std::uint64_t sizeOf(const LeafResult& result) {
    std::uint64_t size = kOverhead;
    for (const Item& item : result.items) {
        size += kOverhead + item.source.size();
        for (const Field& field : item.fields) size += sizeof field + field.value.size();
    }
    for (const Event& event : result.events) size += kOverhead + event.path.size() + event.text.size();
    return size;
}

bool isConstant(const Leaf& leaf) {
    return std::ranges::all_of(leaf.attributes,
                               [](const LeafAttribute& attribute) { return attribute.value.constant(); });
}

}  // namespace

void LeafCache::expect(std::span<const Signature> signatures) {
    std::size_t count = 0;
    for (const Signature& signature : signatures) count += signature.leaves.size();
    results_.reserve(count);
    known_.resize(count);
}

std::optional<Query> LeafCache::query(const Leaf& leaf, const Scope& scope, std::string_view& missing) {
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

const LeafResult& LeafCache::result(const Query& query) {
    const LeafResult*& result = results_[query];
    if (result == nullptr) {
        held_ += kOverhead + query.size();
        result = keep(lookUp(query, context_));
    }
    const std::size_t number = query.leaf().number;
    if (number < known_.size() && isConstant(query.leaf())) known_[number] = result;
    return *result;
}

const LeafResult* LeafCache::keep(LeafResult result) {
    const bool nothing = result.items.empty() && result.events.empty() && !result.incomplete;
    if (nothing) return &nothing_;
    held_ += sizeOf(result);
    return &kept_.emplace_back(std::move(result));
}

void LeafCache::forget() {
    results_.clear();
    kept_.clear();
    std::ranges::fill(known_, nullptr);
    held_ = 0;
}

bool LeafCache::isFull() const {
    return held_ > kMaxHeldBytes;
}

const LeafResult* LeafCache::known(const Leaf& leaf) const {
    return leaf.number < known_.size() ? known_[leaf.number] : nullptr;
}

Truth truthOf(const Leaf& leaf, const LeafResult& result) {
    constexpr std::uint32_t kAnyNumber = std::numeric_limits<std::uint32_t>::max();
    const std::size_t count = result.items.size();
    // What was not examined may have further items, so that a minimum is reached or a maximum exceeded.
    if (result.incomplete && (count < leaf.min || leaf.max != kAnyNumber)) return Truth::Unknown;
    return count >= leaf.min && count <= leaf.max ? Truth::True : Truth::False;
}

}  // namespace toolkit::quorvis
