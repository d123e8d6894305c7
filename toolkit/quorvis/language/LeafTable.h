// What the language says of the kinds of leaves.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

#include "toolkit/quorvis/language/Attribute.h"
#include "toolkit/quorvis/language/Signature.h"

namespace toolkit::quorvis {

class AttributeSet {
  public:
    constexpr AttributeSet() = default;
    constexpr AttributeSet(std::initializer_list<Attribute> attributes) {
        for (const Attribute attribute : attributes) insert(attribute);
    }
    constexpr void insert(Attribute attribute) { bits_ |= bitOf(attribute); }
    constexpr bool contains(Attribute attribute) const { return (bits_ & bitOf(attribute)) != 0; }
    constexpr AttributeSet operator|(AttributeSet other) const { return AttributeSet(bits_ | other.bits_); }
    constexpr AttributeSet without(AttributeSet other) const { return AttributeSet(bits_ & ~other.bits_); }
    constexpr bool meets(AttributeSet other) const { return (bits_ & other.bits_) != 0; }
    constexpr bool empty() const { return bits_ == 0; }
    // REQUIRES: not empty.
    Attribute first() const;

  private:
    constexpr explicit AttributeSet(std::uint64_t bits) : bits_(bits) {}
    static constexpr std::uint64_t bitOf(Attribute attribute) {
        return std::uint64_t{1} << static_cast<unsigned>(attribute);
    }
    std::uint64_t bits_ = 0;
};

struct LeafRules {
    std::string_view name;
    LeafKind kind{};
    AttributeSet allowed;
    AttributeSet required;                     // all of them
    AttributeSet oneOf;                        // at least one of them, unless empty
    bool captures = false;                     // whether Capture may stand in it
    std::span<const std::string_view> values;  // what it gives besides captures
};

// Null when there is no such leaf.
const LeafRules* leafRules(std::string_view name);
const LeafRules& leafRules(LeafKind kind);

}  // namespace toolkit::quorvis
