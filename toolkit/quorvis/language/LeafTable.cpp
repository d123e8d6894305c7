#include "toolkit/quorvis/language/LeafTable.h"

#include <array>
#include <bit>

namespace toolkit::quorvis {

namespace {

using enum Attribute;

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
constexpr std::array kSingleValue = {Names("value")};
constexpr std::array kProcessValues = {Names("pid"), Names("name"), Names("exe"), Names("user")};
constexpr std::array kElfValues = {Names("path"), Names("machine"), Names("soname"), Names("buildId")};
constexpr std::array kFileVersionValues = {Names("name"), Names("version"), Names("vendor")};
constexpr std::array kSwidValues = {Names("tagId"), Names("name"), Names("version"),
                                    Names("regid"), Names("path"), Names("tagVersion")};

// In the order of LeafKind.
constexpr std::array<LeafRules, 11> kLeaves = {{
    {"Package",
     LeafKind::Package,
     AttributeSet{Name, NameRegex, Type, Arch, Source, Compare} | kVersion,
     {},
     {Name, NameRegex},
     false,
     kPackageValues},
    {"File", LeafKind::File, AttributeSet{Path} | kFileTests, {Path}, {}, false, kFileValues},
    {"Glob",
     LeafKind::Glob,
     AttributeSet{Pattern, MaxDepth, Exclude} | kFileTests,
     {Pattern},
     {},
     false,
     kFileValues},
    {"Content", LeafKind::Content, {Path, Regex, Flags, MaxBytes}, {Path, Regex}, {}, true, kContentValues},
    {"Property",
     LeafKind::Property,
     AttributeSet{Path, Format, Section, Key, Regex} | kVersion,
     {Path, Format, Key},
     {},
     false,
     kSingleValue},
    {"Xml",
     LeafKind::Xml,
     AttributeSet{Path, Select, Regex} | kVersion,
     {Path, Select},
     {},
     false,
     kSingleValue},
    {"Process", LeafKind::Process, {Name, Exe, ArgsRegex, User}, {}, {}, false, kProcessValues},
    {"Elf",
     LeafKind::Elf,
     {Path, Machine, Soname, Needed, BuildId, Section, Regex},
     {Path},
     {},
     true,
     kElfValues},
    {"FileVersion",
     LeafKind::FileVersion,
     AttributeSet{Path, Format} | kVersion,
     {Path, Format},
     {},
     false,
     kFileVersionValues},
    {"SwidTag",
     LeafKind::SwidTag,
     AttributeSet{TagId, Name, Regid, Role, Patch, Corpus} | kVersion,
     {},
     {},
     false,
     kSwidValues},
    {"Compare", LeafKind::Compare, AttributeSet{Left} | kVersion, {Left}, kVersionTests, false, {}},
}};

}  // namespace

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

std::string_view nameOf(LeafKind kind) {
    return leafRules(kind).name;
}

}  // namespace toolkit::quorvis
