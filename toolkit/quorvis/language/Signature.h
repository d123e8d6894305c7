// Parsed and validated signatures. Their texts point into the memory of a SignatureFile.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "toolkit/quorvis/language/Identity.h"
#include "toolkit/quorvis/language/LeafSyntax.h"
#include "toolkit/quorvis/language/Template.h"

namespace toolkit::quorvis {

// The name of a group of a regular expression: that of the leaf, or one of its own for a value of the items.
struct Capture {
    int group = 0;
    std::string_view name;
    std::string_view of = {};  // the value; empty for the expression of the leaf
    std::string_view regex = {};

    bool operator==(const Capture&) const = default;
};

// A further value of the records of a Property.
struct NamedKey {
    std::string_view key;
    std::string_view name;
    bool optional = false;

    bool operator==(const NamedKey&) const = default;
};

struct LeafAttribute {
    Attribute attribute{};
    Template value;
};

// Selects items of one kind and tests them.
struct Leaf {
    LeafKind kind{};
    std::string_view id;  // empty when the items are not bound to variables
    std::uint32_t min = 1;
    std::uint32_t max = std::numeric_limits<std::uint32_t>::max();
    std::vector<LeafAttribute> attributes;  // sorted by attribute
    std::vector<Capture> captures;
    std::vector<NamedKey> keys;
    bool ownerAsked = false;  // whether a value of the package that owns the file is used
    std::uint32_t line = 0;
    std::uint32_t number = 0;  // index among all leaves of the file
};

struct Condition {
    enum class Kind : std::uint8_t { All, Any, Not, Optional, Leaf };
    Kind kind = Kind::Leaf;
    std::vector<Condition> children;  // of every kind except Leaf
    std::size_t leaf = 0;             // of kind Leaf: index in Signature::leaves
};

struct Preset {
    std::string_view name;
    std::optional<std::string_view> fallback;
};

struct OutputVariable {
    std::string_view name;
    Template value;
};

// One way to recognise the product of a signature. It has leaves of its own, so identifiers are those of one Detection.
struct Detection {
    std::size_t firstLeaf = 0;  // its leaves in Signature::leaves
    std::size_t endLeaf = 0;
    std::vector<std::size_t> each;  // the leaves of Each, as indices in Signature::leaves
    std::optional<Condition> match;
    std::vector<OutputVariable> output;
    std::uint32_t line = 0;
};

struct Signature {
    std::string_view guid;
    Template name;
    std::string_view metadata;  // the content of Metadata as XML in ASCII, without what is in `identities`
    std::vector<Identity> identities;  // Cpe and Purl elements with variables
    std::vector<Preset> presets;
    std::vector<Leaf> leaves;  // all leaves in document order
    // At least one. A signature without Detection elements has one, made of its own Each, Match and Output.
    std::vector<Detection> detections;
    bool oncePerInstallation = false;  // matches of one installation are one
    std::uint32_t line = 0;
};

}  // namespace toolkit::quorvis
