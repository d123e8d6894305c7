#include "toolkit/quorvis/language/WholeNames.h"

#include <algorithm>

#include "toolkit/quorvis/language/ElementRules.h"
#include "toolkit/quorvis/language/LeafTable.h"

namespace toolkit::quorvis {

namespace {

using enum Attribute;

constexpr AttributeSet kOfFiles = {Attribute::Path, Exe,  Attribute::Machine, Soname, Needed, BuildId,
                                   Section,         Owner};
constexpr AttributeSet kOfProducts = {Name, Arch, Source, TagId, Regid, Role, User, Key, Left};
constexpr AttributeSet kVersions = {Equals, AtLeast, Above, AtMost, Below};
// The others are patterns or expressions, or are invalid with a wildcard.
constexpr AttributeSet kTakenWhole = kOfFiles | kOfProducts | kVersions;

// A bracket or brace counts as part of a pattern: `[` is the name of a program, and `{...}` a form of identifiers.
bool holdsWildcard(std::string_view text) {
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

bool holdsWildcard(const Template& text) {
    if (text.constant()) return holdsWildcard(text.source());
    const std::vector<Template::Piece> pieces = text.pieces();
    std::string joined;
    for (const Template::Piece& piece : pieces) joined += piece.variable ? "x" : piece.text;
    return holdsWildcard(joined);
}

std::string_view adviceFor(LeafKind kind, Attribute attribute) {
    if (attribute == Attribute::Path) return "; Glob finds by patterns";
    if (attribute == Name && kind == LeafKind::Package) return "; nameRegex finds by expressions";
    return {};
}

}  // namespace

std::vector<std::string> wildcardsInWholeNames(const Leaf& leaf) {
    std::vector<std::string> warnings;
    for (const LeafAttribute& given : leaf.attributes) {
        if (!kTakenWhole.contains(given.attribute) || !holdsWildcard(given.value)) continue;
        warnings.push_back(std::string(nameOf(given.attribute)) + " " + quoted(given.value.source()) +
                           " holds a wildcard, but is taken as it stands");
        warnings.back() += adviceFor(leaf.kind, given.attribute);
    }
    return warnings;
}

}  // namespace toolkit::quorvis
