#include "toolkit/quorvis/language/LeafValidator.h"

#include <re2/re2.h>

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <limits>
#include <optional>

#include "toolkit/machine/packages/Packages.h"
#include "toolkit/quorvis/formats/Components.h"
#include "toolkit/quorvis/formats/FormatReaders.h"
#include "toolkit/quorvis/formats/Records.h"
#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/LeafSyntax.h"
#include "toolkit/quorvis/regex/Regex.h"
#include "toolkit/quorvis/versions/Version.h"
#include "toolkit/quorvis/walk/GlobPattern.h"

namespace toolkit::quorvis {

namespace {

bool isNumber(std::string_view text, std::uint64_t min, std::uint64_t max) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= min && number <= max;
}

bool isSize(std::string_view text) {
    return isNumber(text, 0, std::numeric_limits<std::uint64_t>::max());
}

bool isDepth(std::string_view text) {
    return isNumber(text, 1, 64);
}

bool isLengthOfMatch(std::string_view text) {
    return isNumber(text, 1, std::uint64_t{1} << 20);
}

bool isDigest(std::string_view text) {
    return text.size() == 64 && text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

bool isMode(std::string_view text) {
    return !text.empty() && text.size() <= 5 && text.find_first_not_of("01234567") == std::string_view::npos;
}

bool isScheme(std::string_view text) {
    return schemeNamed(text).has_value();
}

bool isAnyOf(std::string_view text, std::initializer_list<std::string_view> words) {
    return std::ranges::find(words, text) != words.end();
}

bool isKind(std::string_view text) {
    return isAnyOf(text, {"file", "dir", "link", "any"});
}

bool isPackageType(std::string_view text) {
    return text == "any" || packageTypeNamed(text);
}

bool isComparison(std::string_view text) {
    return text == "upstream";
}

bool isBoolean(std::string_view text) {
    return isAnyOf(text, {"true", "false"});
}

bool isFlags(std::string_view text) {
    return text.find_first_not_of("ims") == std::string_view::npos;
}

bool isChoiceOfValues(std::string_view text) {
    return isAnyOf(text, {"all", "last"});
}

bool isNotEmpty(std::string_view text) {
    return !text.empty();
}

struct ValueRule {
    Attribute attribute;
    bool (*accepts)(std::string_view value);
    std::string_view expected;
};

constexpr std::string_view kSizeText = "a number of bytes";
constexpr std::string_view kBooleanText = "true or false";

constexpr ValueRule kValueRules[] = {
    {Attribute::Compare, isComparison, "upstream"},
    {Attribute::Corpus, isBoolean, kBooleanText},
    {Attribute::Each, isNotEmpty, "steps to records"},
    {Attribute::Flags, isFlags, "made of the letters i, m and s"},
    {Attribute::From, isSize, kSizeText},
    {Attribute::Key, isNotEmpty, "a key"},
    {Attribute::Kind, isKind, "file, dir, link or any"},
    {Attribute::MaxBytes, isSize, kSizeText},
    {Attribute::MaxDepth, isDepth, "a number from 1 to 64"},
    {Attribute::MaxMatch, isLengthOfMatch, "a number of bytes up to 1048576"},
    {Attribute::MaxSize, isSize, kSizeText},
    {Attribute::MinSize, isSize, kSizeText},
    {Attribute::Mode, isMode, "an octal number"},
    {Attribute::Name, isNotEmpty, "a name"},
    {Attribute::Patch, isBoolean, kBooleanText},
    {Attribute::Scheme, isScheme, "deb, rpm, semver, pep440, dotted, int or text"},
    {Attribute::Sha256, isDigest, "a SHA-256 of 64 hexadecimal digits"},
    {Attribute::Size, isSize, kSizeText},
    {Attribute::Type, isPackageType, "dpkg, rpm, apk, pacman, snap, flatpak, opkg, portage, homebrew or any"},
    {Attribute::Values, isChoiceOfValues, "all or last"},
};

// The description of a problem; none when the value is valid.
using Problem = std::optional<std::string>;

Problem unexpected(Attribute attribute, std::string_view value, std::string_view expected) {
    return std::string(nameOf(attribute)) + " " + quoted(value) + " is not " + std::string(expected);
}

Problem problemOfConstant(Attribute attribute, std::string_view value) {
    for (const ValueRule& rule : kValueRules) {
        if (rule.attribute == attribute && !rule.accepts(value))
            return unexpected(attribute, value, rule.expected);
    }
    return std::nullopt;
}

Problem problemOfFormat(LeafKind kind, std::string_view value) {
    if (kind == LeafKind::FileVersion) {
        if (isAnyOf(value, {"jar", "pe", "python-dist"})) return std::nullopt;
        return unexpected(Attribute::Format, value, "jar, pe or python-dist");
    }
    if (kind == LeafKind::Component) {
        if (componentFormat(value) != nullptr) return std::nullopt;
        return unexpected(Attribute::Format, value, componentFormatNames());
    }
    if (isPropertyFormat(value)) return std::nullopt;
    return unexpected(Attribute::Format, value,
                      "properties, ini, systemd, shell, json, yaml, toml, headers or manifest");
}

// Roles of a tag are not limited.
Problem problemOfRole(LeafKind kind, std::string_view value) {
    if (kind != LeafKind::Component) return std::nullopt;
    if (isAnyOf(value, {"main", "dependency", "build", "toolchain", "setting"})) return std::nullopt;
    return unexpected(Attribute::Role, value, "main, dependency, build, toolchain or setting");
}

const Template* find(const Leaf& leaf, Attribute attribute) {
    for (const LeafAttribute& given : leaf.attributes) {
        if (given.attribute == attribute) return &given.value;
    }
    return nullptr;
}

// The value of an attribute if it is given and has no variables.
std::string_view constantOf(const Leaf& leaf, Attribute attribute) {
    const Template* const text = find(leaf, attribute);
    return text != nullptr && text->constant() ? text->source() : std::string_view();
}

// Problems of the attributes of a Property with each other and with its Value elements.
void checkRecords(const Leaf& leaf, std::vector<std::string>& problems) {
    const std::string_view format = constantOf(leaf, Attribute::Format);
    if (!isPropertyFormat(format)) return;
    const std::string_view each = constantOf(leaf, Attribute::Each);
    const std::string ofFormat = " of format " + std::string(format);
    if (!each.empty() && !isTreeFormat(format)) {
        if (!hasSections(format)) problems.push_back("a file" + ofFormat + " has no records for each");
        if (hasSections(format) && each != "*")
            problems.push_back(*unexpected(Attribute::Each, each, "\"*\", the records" + ofFormat));
        if (find(leaf, Attribute::Section) != nullptr)
            problems.emplace_back("section and each exclude each other");
    }
    if (format == "shell" && find(leaf, Attribute::Values) != nullptr)
        problems.emplace_back("a file of format shell has one value for a key");
    for (const NamedKey& named : leaf.keys) {
        const KeySteps steps = isTreeFormat(format) ? parseKeySteps(named.key) : KeySteps();
        if (named.key.empty() || std::ranges::any_of(steps, &KeyStep::any))
            problems.push_back("key " + quoted(named.key) + " of the value " + quoted(named.name) +
                               " does not name one value");
    }
}

// The scheme of the leaf's version tests; none when it depends on the items.
std::optional<Scheme> schemeOf(const Leaf& leaf) {
    if (const Template* const scheme = find(leaf, Attribute::Scheme))
        return scheme->constant() ? schemeNamed(scheme->source()) : std::nullopt;
    if (leaf.kind == LeafKind::Package || leaf.kind == LeafKind::SwidTag) return std::nullopt;
    return Scheme::Dotted;
}

Problem problemOfVersion(const Leaf& leaf, Attribute attribute, std::string_view value) {
    const std::optional<Scheme> scheme = schemeOf(leaf);
    const bool valid = !value.empty() && (!scheme || compareVersions(*scheme, value, value).has_value());
    if (valid) return std::nullopt;
    return unexpected(attribute, value, "a version");
}

// The text with each variable replaced by `value`.
std::string sample(const Template& text, std::string_view value) {
    if (text.constant()) return std::string(text.source());
    std::string result;
    for (const Template::Piece& piece : text.pieces()) result += piece.variable ? value : piece.text;
    return result;
}

bool startsWithVariable(const Template& text) {
    return !text.constant() && text.pieces().front().variable;
}

Problem problemOfPath(const Template& text) {
    if (text.source().starts_with('/') || startsWithVariable(text)) return std::nullopt;
    return unexpected(Attribute::Path, text.source(), "an absolute path");
}

Problem problemOfSelection(std::string_view value) {
    std::string problem;
    if (XmlSelection::parse(value, problem)) return std::nullopt;
    return "select " + quoted(value) + ": " + problem;
}

Problem problemOfGlob(Attribute attribute, const Template& text, const Settings& settings) {
    std::string pattern = sample(text, "x");
    if (startsWithVariable(text)) pattern.insert(0, 1, '/');
    std::vector<GlobSteps> alternatives;
    Problem problem = parsePattern(pattern, alternatives);
    const bool wholeTreeAllowed = attribute == Attribute::Exclude || settings.fileSystem.wholeTree;
    if (!problem && !wholeTreeAllowed && searchesWholeTree(alternatives)) {
        problem = "\"**\" stands below no directory of a fixed name";
    }
    if (!problem) return std::nullopt;
    return std::string(nameOf(attribute)) + " " + quoted(text.source()) + ": " + *problem;
}

// The number of groups of an expression. None, with `problem` set, when it is invalid.
std::optional<int> groupsOf(const std::string& pattern, std::string_view flags, std::string& problem) {
    const std::optional<int> plain = groupsOfPlainRegex(pattern);
    if (plain && *plain <= kMaxGroups) return plain;
    const re2::RE2* const regex = compileRegex(pattern, flags, problem);
    if (regex == nullptr) return std::nullopt;
    return regex->NumberOfCapturingGroups();
}

// The flags if they are constant and valid.
std::string_view flagsOf(const Leaf& leaf) {
    const Template* const flags = find(leaf, Attribute::Flags);
    return flags != nullptr && flags->constant() && isFlags(flags->source()) ? flags->source()
                                                                             : std::string_view();
}

Problem problemOfRegex(const Leaf& leaf, Attribute attribute, const Template& text) {
    std::string problem;
    const std::optional<int> groups = groupsOf(sample(text, "x"), flagsOf(leaf), problem);
    if (!groups) return std::string(nameOf(attribute)) + " " + quoted(text.source()) + ": " + problem;
    for (const Capture& capture : leaf.captures) {
        if (capture.of.empty() && capture.group > *groups)
            return "regex has no group " + std::to_string(capture.group);
    }
    return std::nullopt;
}

Problem problemOfValue(const Leaf& leaf, const LeafAttribute& given, const Settings& settings) {
    const Template& text = given.value;
    switch (given.attribute) {
        case Attribute::Path:
            return problemOfPath(text);
        case Attribute::Pattern:
        case Attribute::Exclude:
            return problemOfGlob(given.attribute, text, settings);
        case Attribute::Regex:
        case Attribute::ArgsRegex:
        case Attribute::NameRegex:
            return problemOfRegex(leaf, given.attribute, text);
        default:
            break;
    }
    if (!text.constant()) return std::nullopt;
    switch (given.attribute) {
        case Attribute::Equals:
        case Attribute::AtLeast:
        case Attribute::Above:
        case Attribute::AtMost:
        case Attribute::Below:
            return problemOfVersion(leaf, given.attribute, text.source());
        case Attribute::Format:
            return problemOfFormat(leaf.kind, text.source());
        case Attribute::Role:
            return problemOfRole(leaf.kind, text.source());
        case Attribute::Select:
            return problemOfSelection(text.source());
        default:
            return problemOfConstant(given.attribute, text.source());
    }
}

bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// Attributes whose values are compared literally. All others contain patterns or expressions, or cannot contain a wildcard.
constexpr AttributeSet kLiterals = {
    Attribute::Above,   Attribute::Arch,    Attribute::AtLeast, Attribute::AtMost,  Attribute::Below,
    Attribute::BuildId, Attribute::Each,    Attribute::Equals,  Attribute::Exe,     Attribute::Key,
    Attribute::Left,    Attribute::Machine, Attribute::Name,    Attribute::Needed,  Attribute::Owner,
    Attribute::Path,    Attribute::Regid,   Attribute::Role,    Attribute::Section, Attribute::Soname,
    Attribute::Source,  Attribute::TagId,   Attribute::User};

// Brackets and braces count only in pairs that form a pattern: `[` is the name of a program, and some identifiers have the
// form `{...}`.
bool containsWildcard(std::string_view text) {
    const std::size_t first = text.find_first_of("*?[{");
    if (first == std::string_view::npos) return false;
    if (text.find_first_of("*?", first) != std::string_view::npos) return true;
    const std::size_t bracket = text.find('[', first);
    if (bracket != std::string_view::npos && text.find(']', bracket + 2) != std::string_view::npos)
        return true;
    const std::size_t brace = text.find('{', first);
    const std::size_t comma = text.find(',', brace);
    return brace != std::string_view::npos && text.find('}', comma) != std::string_view::npos;
}

// The text without the steps of a key that stand for all members or elements.
std::string withoutAnySteps(const Leaf& leaf, std::string_view key) {
    if (key == "*") return {};
    if (!isTreeFormat(constantOf(leaf, Attribute::Format)) || key.starts_with('/')) return std::string(key);
    std::string rest;
    for (const KeyStep& step : parseKeySteps(key)) {
        if (!step.any) rest += step.name;
    }
    return rest;
}

// What is taken literally in the value of an attribute.
std::string literalsIn(const Leaf& leaf, const LeafAttribute& given) {
    const std::string value = sample(given.value, "x");
    const bool steps = given.attribute == Attribute::Key || given.attribute == Attribute::Each;
    return steps ? withoutAnySteps(leaf, value) : value;
}

std::string_view adviceFor(LeafKind kind, Attribute attribute) {
    if (attribute == Attribute::Path) return "; Glob finds by patterns";
    if (attribute == Attribute::Name && kind == LeafKind::Package) return "; nameRegex finds by expressions";
    return {};
}

// Whether the leaf searches an executable for an expression that names no product. With max="1", the section must contain
// one match only, which cannot be any of several numbers.
bool matchesAnyNumber(const Leaf& leaf) {
    const Template* const regex = find(leaf, Attribute::Regex);
    if (leaf.kind != LeafKind::Elf || regex == nullptr || !regex->constant() || leaf.max == 1) return false;
    std::string_view text = regex->source();
    if (text.find_first_of("^$") != std::string_view::npos) return false;
    while (!text.empty()) {
        if (isLetter(text.front())) return false;
        std::size_t length = 1;
        if (text.front() == '\\') length = 2;
        // A bracket at the start of a class is one of its characters.
        if (text.front() == '[') length = text.find(']', text.starts_with("[^") ? 3 : 2) + 1;
        if (length == 0 || length > text.size()) break;
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace

std::vector<std::string> problemsOf(const Leaf& leaf, const Settings& settings) {
    std::vector<std::string> problems;
    for (const LeafAttribute& given : leaf.attributes) {
        if (Problem problem = problemOfValue(leaf, given, settings)) problems.push_back(std::move(*problem));
    }
    if (leaf.kind == LeafKind::Package && find(leaf, Attribute::Name) && find(leaf, Attribute::NameRegex))
        problems.emplace_back("name and nameRegex exclude each other");
    if (leaf.kind == LeafKind::Property) checkRecords(leaf, problems);
    if (!std::ranges::all_of(leaf.captures, [](const Capture& capture) { return !capture.of.empty(); }) &&
        find(leaf, Attribute::Regex) == nullptr)
        problems.emplace_back("Capture stands in a leaf without regex");
    return problems;
}

std::vector<std::string> warningsFor(const Leaf& leaf) {
    std::vector<std::string> warnings;
    if (matchesAnyNumber(leaf))
        warnings.emplace_back("the regex does not name a product and may match any number in the section");
    for (const LeafAttribute& given : leaf.attributes) {
        if (!kLiterals.contains(given.attribute) || !containsWildcard(literalsIn(leaf, given))) continue;
        warnings.push_back(std::string(nameOf(given.attribute)) + " " + quoted(given.value.source()) +
                           " contains a wildcard, but is compared literally");
        warnings.back() += adviceFor(leaf.kind, given.attribute);
    }
    return warnings;
}

}  // namespace toolkit::quorvis
