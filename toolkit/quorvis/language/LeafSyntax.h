// The syntax of the leaves: their kinds, their attributes, and the values that they provide.
#pragma once

#include <array>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

namespace toolkit::quorvis {

enum class LeafKind : std::uint8_t {
    Package,
    File,
    Glob,
    Content,
    Property,
    Xml,
    Process,
    Elf,
    FileVersion,
    SwidTag,
    Component,
    Bytes,
    Compare,
};

// "FileVersion"
std::string_view nameOf(LeafKind kind);

// The attributes of leaves, except id, min and max, which every leaf has.
enum class Attribute : std::uint8_t {
    Above,
    Arch,
    ArgsRegex,
    AtLeast,
    AtMost,
    Below,
    BuildId,
    Compare,
    Corpus,
    Each,
    Equals,
    Exclude,
    Exe,
    Flags,
    Format,
    From,
    Key,
    Kind,
    Left,
    Machine,
    MaxBytes,
    MaxDepth,
    MaxMatch,
    MaxSize,
    MinSize,
    Mode,
    Name,
    NameRegex,
    Needed,
    Owner,
    Patch,
    Path,
    Pattern,
    Regex,
    Regid,
    Role,
    Scheme,
    Section,
    Select,
    Sha256,
    Size,
    Soname,
    Source,
    TagId,
    Type,
    User,
    Values,
};

// The name in a signature: "argsRegex".
std::string_view nameOf(Attribute attribute);
std::optional<Attribute> attributeNamed(std::string_view name);

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
    LeafKind kind{};
    std::string_view name;
    AttributeSet allowed;
    AttributeSet required;                     // all of them must be present
    AttributeSet oneOf;                        // unless empty, at least one of them must be present
    bool captures = false;                     // whether Capture elements may name groups of its regex
    std::span<const std::string_view> values;  // the fields that the leaf provides besides captures
    bool keys = false;                         // whether Value elements are allowed
};

// The values that every leaf that finds files provides besides: of the package that owns the file.
inline constexpr std::array<std::string_view, 3> kOwnerValues = {"package", "packageName", "packageUpstream"};
bool findsFiles(LeafKind kind);

// The arguments of a Process, which Capture may search, but which are no value.
inline constexpr std::string_view kArguments = "args";

// Null when no leaf has this name.
const LeafRules* leafRules(std::string_view name);
const LeafRules& leafRules(LeafKind kind);

}  // namespace toolkit::quorvis
