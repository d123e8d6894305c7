#include "toolkit/quorvis/language/LeafSyntax.h"

#include <algorithm>
#include <array>
#include <bit>

namespace toolkit::quorvis {

namespace {

using enum Attribute;

// Whether each row of a table stands at the position that its key gives.
template <class Rows, class Key>
constexpr bool arePositions(const Rows& rows, Key key) {
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (static_cast<std::size_t>(rows[i].*key) != i) return false;
    }
    return true;
}

constexpr AttributeSet kVersion = {Equals, AtLeast, Above, AtMost, Below, Scheme};
constexpr AttributeSet kVersionTests = {Equals, AtLeast, Above, AtMost, Below};
constexpr AttributeSet kFileTests = {Attribute::Kind, Size, MinSize, MaxSize, Sha256, Mode, Owner};

using Names = std::string_view;
constexpr std::array kPackageValues = {Names("name"),   Names("version"), Names("upstream"),
                                       Names("epoch"),  Names("release"), Names("arch"),
                                       Names("source"), Names("type"),    Names("purl")};
constexpr std::array kFileValues = {Names("path"),  Names("name"),   Names("dir"),   Names("size"),
                                    Names("mtime"), Names("sha256"), Names("target")};
constexpr std::array kContentValues = {Names("path"), Names("line"), Names("match")};
constexpr std::array kBytesValues = {Names("path"), Names("offset"), Names("match")};
constexpr std::array kSingleValue = {Names("value")};
constexpr std::array kProcessValues = {Names("pid"), Names("name"), Names("exe"), Names("user")};
// The fields of a package note are PackageNote's.
constexpr std::array kElfValues = {Names("path"),
                                   Names("machine"),
                                   Names("soname"),
                                   Names("buildId"),
                                   Names("noteType"),
                                   Names("noteName"),
                                   Names("noteVersion"),
                                   Names("noteArchitecture"),
                                   Names("noteOs"),
                                   Names("noteOsVersion"),
                                   Names("noteOsCpe"),
                                   Names("noteAppCpe"),
                                   Names("noteDebugInfoUrl")};
constexpr std::array kFileVersionValues = {Names("name"), Names("version"), Names("vendor")};
constexpr std::array kSwidValues = {Names("tagId"), Names("name"), Names("version"),
                                    Names("regid"), Names("path"), Names("tagVersion")};
constexpr std::array kComponentValues = {Names("path"), Names("name"), Names("version"), Names("group"),
                                         Names("role"), Names("purl"), Names("value"),   Names("container")};

// The position of a row is the value of its kind.
constexpr std::array<LeafRules, 13> kLeaves = {{
    {LeafKind::Package,
     "Package",
     AttributeSet{Name, NameRegex, Type, Arch, Source, Compare} | kVersion,
     {},
     {Name, NameRegex},
     false,
     kPackageValues},
    {LeafKind::File, "File", AttributeSet{Path} | kFileTests, {Path}, {}, false, kFileValues},
    {LeafKind::Glob,
     "Glob",
     AttributeSet{Pattern, MaxDepth, Exclude} | kFileTests,
     {Pattern},
     {},
     false,
     kFileValues},
    {LeafKind::Content, "Content", {Path, Regex, Flags, MaxBytes}, {Path, Regex}, {}, true, kContentValues},
    {LeafKind::Property,
     "Property",
     AttributeSet{Path, Format, Section, Each, Key, Values, Regex} | kVersion,
     {Path, Format, Key},
     {},
     false,
     kSingleValue,
     true},
    {LeafKind::Xml,
     "Xml",
     AttributeSet{Path, Select, Regex} | kVersion,
     {Path, Select},
     {},
     false,
     kSingleValue},
    {LeafKind::Process, "Process", {Name, Exe, ArgsRegex, User}, {}, {}, false, kProcessValues},
    {LeafKind::Elf,
     "Elf",
     {Path, Machine, Soname, Needed, BuildId, Section, Regex},
     {Path},
     {},
     true,
     kElfValues},
    {LeafKind::FileVersion,
     "FileVersion",
     AttributeSet{Path, Format} | kVersion,
     {Path, Format},
     {},
     false,
     kFileVersionValues},
    {LeafKind::SwidTag,
     "SwidTag",
     AttributeSet{TagId, Name, Regid, Role, Patch, Corpus} | kVersion,
     {},
     {},
     false,
     kSwidValues},
    {LeafKind::Component,
     "Component",
     AttributeSet{Path, Format, Role, Name} | kVersion,
     {Path, Format},
     {},
     false,
     kComponentValues},
    {LeafKind::Bytes,
     "Bytes",
     {Path, Regex, Flags, From, MaxBytes, MaxMatch},
     {Path, Regex},
     {},
     true,
     kBytesValues},
    {LeafKind::Compare, "Compare", AttributeSet{Left} | kVersion, {Left}, kVersionTests, false, {}},
}};
static_assert(arePositions(kLeaves, &LeafRules::kind));

struct NamedAttribute {
    Attribute attribute;
    std::string_view name;
};

// Sorted by name. The position of a row is the value of its attribute.
constexpr std::array<NamedAttribute, 47> kNames = {{
    {Attribute::Above, "above"},
    {Attribute::Arch, "arch"},
    {Attribute::ArgsRegex, "argsRegex"},
    {Attribute::AtLeast, "atLeast"},
    {Attribute::AtMost, "atMost"},
    {Attribute::Below, "below"},
    {Attribute::BuildId, "buildId"},
    {Attribute::Compare, "compare"},
    {Attribute::Corpus, "corpus"},
    {Attribute::Each, "each"},
    {Attribute::Equals, "equals"},
    {Attribute::Exclude, "exclude"},
    {Attribute::Exe, "exe"},
    {Attribute::Flags, "flags"},
    {Attribute::Format, "format"},
    {Attribute::From, "from"},
    {Attribute::Key, "key"},
    {Attribute::Kind, "kind"},
    {Attribute::Left, "left"},
    {Attribute::Machine, "machine"},
    {Attribute::MaxBytes, "maxBytes"},
    {Attribute::MaxDepth, "maxDepth"},
    {Attribute::MaxMatch, "maxMatch"},
    {Attribute::MaxSize, "maxSize"},
    {Attribute::MinSize, "minSize"},
    {Attribute::Mode, "mode"},
    {Attribute::Name, "name"},
    {Attribute::NameRegex, "nameRegex"},
    {Attribute::Needed, "needed"},
    {Attribute::Owner, "owner"},
    {Attribute::Patch, "patch"},
    {Attribute::Path, "path"},
    {Attribute::Pattern, "pattern"},
    {Attribute::Regex, "regex"},
    {Attribute::Regid, "regid"},
    {Attribute::Role, "role"},
    {Attribute::Scheme, "scheme"},
    {Attribute::Section, "section"},
    {Attribute::Select, "select"},
    {Attribute::Sha256, "sha256"},
    {Attribute::Size, "size"},
    {Attribute::Soname, "soname"},
    {Attribute::Source, "source"},
    {Attribute::TagId, "tagId"},
    {Attribute::Type, "type"},
    {Attribute::User, "user"},
    {Attribute::Values, "values"},
}};
static_assert(std::ranges::is_sorted(kNames, {}, &NamedAttribute::name));
static_assert(arePositions(kNames, &NamedAttribute::attribute));

// For each first letter of a name, the position of the first row; then the number of rows.
constexpr auto kStarts = [] {
    std::array<std::uint8_t, 27> starts{};
    for (const NamedAttribute& row : kNames) {
        const auto letter = static_cast<std::size_t>(row.name.front() - 'a');
        for (std::size_t later = letter + 1; later < starts.size(); ++later) ++starts[later];
    }
    return starts;
}();

}  // namespace

std::string_view nameOf(LeafKind kind) {
    return leafRules(kind).name;
}

Attribute AttributeSet::first() const {
    return static_cast<Attribute>(std::countr_zero(bits_));
}

const LeafRules* leafRules(std::string_view name) {
    for (const LeafRules& rules : kLeaves) {
        if (rules.name == name) return &rules;
    }
    return nullptr;
}

const LeafRules& leafRules(LeafKind kind) {
    return kLeaves.at(static_cast<std::size_t>(kind));
}

bool findsFiles(LeafKind kind) {
    return kind != LeafKind::Package && kind != LeafKind::Compare;
}

std::string_view nameOf(Attribute attribute) {
    return kNames.at(static_cast<std::size_t>(attribute)).name;
}

std::optional<Attribute> attributeNamed(std::string_view name) {
    if (name.empty() || name.front() < 'a' || name.front() > 'z') return std::nullopt;
    const auto letter = static_cast<std::size_t>(name.front() - 'a');
    for (std::size_t i = kStarts[letter]; i < kStarts[letter + 1]; ++i) {
        if (kNames[i].name == name) return kNames[i].attribute;
    }
    return std::nullopt;
}

}  // namespace toolkit::quorvis
