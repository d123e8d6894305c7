#include "toolkit/quorvis/language/Variables.h"

#include <algorithm>
#include <span>

#include "kest/Ascii.h"
#include "toolkit/quorvis/language/LeafSyntax.h"
#include "toolkit/quorvis/regex/Regex.h"
#include "toolkit/quorvis/walk/GlobPattern.h"

namespace toolkit::quorvis {

namespace {

std::string escapedFor(Quoting quoting, std::string_view value) {
    if (quoting == Quoting::Regex) return quotedForRegex(value);
    if (quoting == Quoting::Pattern) return quotedForPattern(value);
    return std::string(value);
}

using Ids = std::vector<std::string_view>;

bool isOwnerValue(const Leaf& leaf, std::string_view field) {
    return findsFiles(leaf.kind) && std::ranges::find(kOwnerValues, field) != kOwnerValues.end();
}

class IdentifierChecker {
  public:
    IdentifierChecker(const Signature& signature, const Detection& detection, const Element& element,
                      Diagnostics& diagnostics)
        : signature_(signature), detection_(detection), element_(element), diagnostics_(diagnostics) {}

    void check() {
        Ids ids;
        for (const std::size_t leaf : detection_.each) addId(leaf, ids);
        if (detection_.match) addIds(*detection_.match, ids);
        checkText(signature_.name);
        for (const Leaf& leaf : leaves()) {
            for (const LeafAttribute& attribute : leaf.attributes) checkText(attribute.value);
        }
        for (const OutputVariable& variable : detection_.output) checkText(variable.value);
        for (const Identity& identity : signature_.identities) checkIdentity(identity);
    }

  private:
    void addId(std::size_t leaf, Ids& ids) {
        const std::string_view id = signature_.leaves[leaf].id;
        if (id.empty()) return;
        if (std::ranges::find(ids, id) != ids.end()) {
            diagnostics_.problem(element_, "id " + quoted(id) + " is used twice (line " +
                                               std::to_string(signature_.leaves[leaf].line) + ")");
        }
        ids.push_back(id);
    }

    void addIds(const Condition& condition, Ids& ids) {
        if (condition.kind == Condition::Kind::Leaf) {
            if (condition.leaf < signature_.leaves.size()) addId(condition.leaf, ids);
            return;
        }
        if (condition.kind != Condition::Kind::Any) {
            for (const Condition& child : condition.children) addIds(child, ids);
            return;
        }
        // At most one branch of Any is bound, so the branches may use the same identifiers.
        const Ids before = ids;
        for (const Condition& child : condition.children) {
            Ids branch = before;
            addIds(child, branch);
            ids.insert(ids.end(), branch.begin() + static_cast<std::ptrdiff_t>(before.size()), branch.end());
        }
    }

    // The variables of an identity are those of the output, or what leaves and presets provide. A Detection that does not
    // have them has no such identity.
    void checkIdentity(const Identity& identity) {
        for (const Template::Piece& piece : identity.text.pieces()) {
            if (!piece.variable || isOutput(piece.text) || isPreset(piece.text)) continue;
            if (piece.text.find('.') == std::string_view::npos || (!hasDetections() && !isSet(piece.text)))
                diagnostics_.warning(element_, std::string(nameOf(identity.kind)) + " uses " +
                                                   quoted(piece.text) + ", which has no value");
        }
    }

    // Whether the signature has Detection elements.
    bool hasDetections() const { return element_.name == "Detection"; }

    bool isOutput(std::string_view name) const {
        return hasDetections() || std::ranges::any_of(detection_.output, [&](const OutputVariable& variable) {
                   return variable.name == name;
               });
    }

    bool isPreset(std::string_view name) const {
        return std::ranges::any_of(signature_.presets,
                                   [&](const Preset& preset) { return preset.name == name; });
    }

    void checkText(const Template& text) {
        if (text.constant()) return;
        for (const Template::Piece& piece : text.pieces()) {
            if (piece.variable && !isSet(piece.text))
                diagnostics_.warning(element_, "nothing in the " + kest::lowerCase(element_.name) +
                                                   " gives " + quoted(piece.text) + " a value");
        }
    }

    // The host may preset any name without a dot.
    bool isSet(std::string_view name) const {
        const std::size_t dot = name.find('.');
        if (dot == std::string_view::npos) return true;
        const auto sameName = [&](const Preset& preset) { return preset.name == name; };
        if (std::ranges::any_of(signature_.presets, sameName)) return true;
        const std::string_view id = name.substr(0, dot);
        const std::string_view field = name.substr(dot + 1);
        if (id == "quorvis") return field == "root" || field == "arch";
        return std::ranges::any_of(leaves(),
                                   [&](const Leaf& leaf) { return leaf.id == id && provides(leaf, field); });
    }

    std::span<const Leaf> leaves() const {
        return std::span(signature_.leaves)
            .subspan(detection_.firstLeaf, detection_.endLeaf - detection_.firstLeaf);
    }

    static bool provides(const Leaf& leaf, std::string_view field) {
        const auto& values = leafRules(leaf.kind).values;
        const auto sameName = [&](const auto& named) { return named.name == field; };
        return std::ranges::find(values, field) != values.end() || isOwnerValue(leaf, field) ||
               std::ranges::any_of(leaf.captures, sameName) || std::ranges::any_of(leaf.keys, sameName);
    }

    const Signature& signature_;
    const Detection& detection_;
    const Element& element_;
    Diagnostics& diagnostics_;
};

void noteOwners(const Template& text, std::span<Leaf> leaves) {
    if (text.constant()) return;
    for (const Template::Piece& piece : text.pieces()) {
        const std::size_t dot = piece.variable ? piece.text.rfind('.') : std::string_view::npos;
        if (dot == std::string_view::npos) continue;
        for (Leaf& leaf : leaves) {
            if (leaf.id == piece.text.substr(0, dot) && isOwnerValue(leaf, piece.text.substr(dot + 1)))
                leaf.ownerAsked = true;
        }
    }
}

}  // namespace

Presets::Presets(std::vector<PresetValue> values) : values_(std::move(values)) {
    for (const PresetValue& value : values_) byName_.emplace(value.name, &value);
}

const std::string* Presets::find(std::string_view name, std::string_view guid) const {
    const std::string* forAll = nullptr;
    const auto [first, last] = byName_.equal_range(name);
    for (auto entry = first; entry != last; ++entry) {
        const PresetValue& value = *entry->second;
        if (kest::equalsIgnoringCase(value.guid, guid)) return &value.value;
        if (value.guid.empty()) forAll = &value.value;
    }
    return forAll;
}

std::optional<std::string_view> Scope::find(std::string_view name) const {
    const std::size_t dot = name.rfind('.');
    if (dot != std::string_view::npos) {
        const std::string_view id = name.substr(0, dot);
        for (auto bound = bound_.rbegin(); bound != bound_.rend(); ++bound) {
            if (bound->first != id) continue;
            const std::string* const value = bound->second->find(name.substr(dot + 1));
            if (value != nullptr) return *value;
        }
    }
    const std::string* const preset = presets_.find(name, signature_.guid);
    if (preset != nullptr) return *preset;
    for (const Preset& declared : signature_.presets) {
        if (declared.name == name) return declared.fallback;
    }
    return std::nullopt;
}

bool Scope::isOfLeaf(std::string_view name) const {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) return false;
    const std::string_view id = name.substr(0, dot);
    return std::any_of(signature_.leaves.begin(), signature_.leaves.end(),
                       [id](const Leaf& leaf) { return leaf.id == id; });
}

std::optional<std::string> expand(const Template& text, const Scope& scope, Quoting quoting,
                                  std::string_view& missing) {
    if (text.constant()) return std::string(text.source());
    std::string expanded;
    for (const Template::Piece& piece : text.pieces()) {
        if (!piece.variable) {
            expanded.append(piece.text);
            continue;
        }
        const std::optional<std::string_view> value = scope.find(piece.text);
        if (!value) {
            missing = piece.text;
            return std::nullopt;
        }
        expanded.append(escapedFor(quoting, *value));
    }
    return expanded;
}

void checkIdentifiers(const Signature& signature, const Detection& detection, const Element& element,
                      Diagnostics& diagnostics) {
    IdentifierChecker(signature, detection, element, diagnostics).check();
}

void noteOwners(Signature& signature, const Detection& detection) {
    const std::span<Leaf> leaves =
        std::span(signature.leaves).subspan(detection.firstLeaf, detection.endLeaf - detection.firstLeaf);
    noteOwners(signature.name, leaves);
    for (const Leaf& leaf : leaves) {
        for (const LeafAttribute& attribute : leaf.attributes) noteOwners(attribute.value, leaves);
    }
    for (const OutputVariable& variable : detection.output) noteOwners(variable.value, leaves);
    for (const Identity& identity : signature.identities) noteOwners(identity.text, leaves);
}

}  // namespace toolkit::quorvis
