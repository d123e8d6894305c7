#include "toolkit/quorvis/language/LeafChecks.h"

#include <re2/re2.h>

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <limits>
#include <optional>

#include "toolkit/machine/packages/Packages.h"
#include "toolkit/quorvis/formats/XmlSelection.h"
#include "toolkit/quorvis/language/ElementRules.h"
#include "toolkit/quorvis/regex/Regex.h"
#include "toolkit/quorvis/versions/Version.h"
#include "toolkit/quorvis/walk/GlobPattern.h"

namespace toolkit::quorvis {

namespace {

bool isNumber(std::string_view text, std::uint64_t least, std::uint64_t most) {
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size() && number >= least && number <= most;
}

bool isSize(std::string_view text) {
    return isNumber(text, 0, std::numeric_limits<std::uint64_t>::max());
}

bool isDepth(std::string_view text) {
    return isNumber(text, 1, 64);
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

bool isFilled(std::string_view text) {
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
    {Attribute::Flags, isFlags, "made of the letters i, m and s"},
    {Attribute::Key, isFilled, "a key"},
    {Attribute::Kind, isKind, "file, dir, link or any"},
    {Attribute::MaxBytes, isSize, kSizeText},
    {Attribute::MaxDepth, isDepth, "a number from 1 to 64"},
    {Attribute::MaxSize, isSize, kSizeText},
    {Attribute::MinSize, isSize, kSizeText},
    {Attribute::Mode, isMode, "an octal number"},
    {Attribute::Name, isFilled, "a name"},
    {Attribute::Patch, isBoolean, kBooleanText},
    {Attribute::Scheme, isScheme, "deb, rpm, semver, pep440, dotted, int or text"},
    {Attribute::Sha256, isDigest, "a SHA-256 of 64 hexadecimal digits"},
    {Attribute::Size, isSize, kSizeText},
    {Attribute::Type, isPackageType, "dpkg, rpm, apk, pacman, snap, flatpak or any"},
};

// What is wrong with the value of this attribute, which is `text` with some value for each variable.
using Problem = std::optional<std::string>;

Problem notWhatIsExpected(Attribute attribute, std::string_view value, std::string_view expected) {
    return std::string(nameOf(attribute)) + " " + quoted(value) + " is not " + std::string(expected);
}

Problem problemOfWord(Attribute attribute, std::string_view value) {
    for (const ValueRule& rule : kValueRules) {
        if (rule.attribute == attribute && !rule.accepts(value))
            return notWhatIsExpected(attribute, value, rule.expected);
    }
    return std::nullopt;
}

Problem problemOfFormat(LeafKind kind, std::string_view value) {
    if (kind == LeafKind::FileVersion) {
        if (isAnyOf(value, {"jar", "pe", "python-dist"})) return std::nullopt;
        return notWhatIsExpected(Attribute::Format, value, "jar, pe or python-dist");
    }
    if (isAnyOf(value, {"properties", "ini", "shell", "json"})) return std::nullopt;
    return notWhatIsExpected(Attribute::Format, value, "properties, ini, shell or json");
}

const Template* find(const Leaf& leaf, Attribute attribute) {
    for (const LeafAttribute& given : leaf.attributes) {
        if (given.attribute == attribute) return &given.value;
    }
    return nullptr;
}

// The scheme of the leaf's version tests; none when it depends on what is found.
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
    return notWhatIsExpected(attribute, value, "a version");
}

// The text with each variable replaced by one that is as good as any.
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
    return notWhatIsExpected(Attribute::Path, text.source(), "an absolute path");
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
    Problem problem = readPattern(pattern, alternatives);
    const bool mayRoam = attribute == Attribute::Exclude || settings.fileSystem.wholeTree;
    if (!problem && !mayRoam && searchesWholeTree(alternatives)) {
        problem = "\"**\" stands below no directory of a fixed name";
    }
    if (!problem) return std::nullopt;
    return std::string(nameOf(attribute)) + " " + quoted(text.source()) + ": " + *problem;
}

// How many groups an expression has; none, with `problem` told, when it is wrong.
std::optional<int> groupsOf(const std::string& pattern, std::string_view flags, std::string& problem) {
    const std::optional<int> plain = groupsOfPlainRegex(pattern);
    if (plain && *plain <= kMaxGroups) return plain;
    const re2::RE2* const regex = compileRegex(pattern, flags, problem);
    if (regex == nullptr) return std::nullopt;
    return regex->NumberOfCapturingGroups();
}

// The flags so far as they are known and proper.
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
        if (capture.group > *groups) return "regex has no group " + std::to_string(capture.group);
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
        case Attribute::Select:
            return problemOfSelection(text.source());
        default:
            return problemOfWord(given.attribute, text.source());
    }
}

bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

}  // namespace

std::vector<std::string> problemsOf(const Leaf& leaf, const Settings& settings) {
    std::vector<std::string> problems;
    for (const LeafAttribute& given : leaf.attributes) {
        if (Problem problem = problemOfValue(leaf, given, settings)) problems.push_back(std::move(*problem));
    }
    if (leaf.kind == LeafKind::Package && find(leaf, Attribute::Name) && find(leaf, Attribute::NameRegex))
        problems.emplace_back("name and nameRegex exclude each other");
    if (!leaf.captures.empty() && find(leaf, Attribute::Regex) == nullptr)
        problems.emplace_back("Capture stands in a leaf without regex");
    return problems;
}

bool findsAnyNumber(const Leaf& leaf) {
    const Template* const regex = find(leaf, Attribute::Regex);
    if (leaf.kind != LeafKind::Elf || regex == nullptr || !regex->constant()) return false;
    std::string_view text = regex->source();
    if (text.find_first_of("^$") != std::string_view::npos) return false;
    while (!text.empty()) {
        if (isLetter(text.front())) return false;
        std::size_t length = 1;
        if (text.front() == '\\') length = 2;
        // A bracket right at the start of a class is one of its characters.
        if (text.front() == '[') length = text.find(']', text.starts_with("[^") ? 3 : 2) + 1;
        if (length == 0 || length > text.size()) break;
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace toolkit::quorvis
