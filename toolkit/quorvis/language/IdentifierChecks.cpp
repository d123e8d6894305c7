#include "toolkit/quorvis/language/IdentifierChecks.h"

#include <algorithm>
#include <string>

#include "toolkit/quorvis/language/Diagnostics.h"
#include "toolkit/quorvis/language/LeafSyntax.h"

namespace toolkit::quorvis {

namespace {

using Ids = std::vector<std::string_view>;

class Checker {
  public:
    Checker(const Signature& signature, const Element& element, Diagnostics& diagnostics)
        : signature_(signature), element_(element), diagnostics_(diagnostics) {}

    void check() {
        Ids ids;
        if (signature_.each) addId(*signature_.each, ids);
        if (signature_.match) addIds(*signature_.match, ids);
        checkText(signature_.name);
        for (const Leaf& leaf : signature_.leaves) {
            for (const LeafAttribute& attribute : leaf.attributes) checkText(attribute.value);
        }
        for (const OutputVariable& variable : signature_.output) checkText(variable.value);
    }

  private:
    void addId(std::size_t leaf, Ids& ids) {
        const std::string_view id = signature_.leaves[leaf].id;
        if (id.empty()) return;
        if (std::ranges::find(ids, id) != ids.end()) {
            diagnostics_.problem(element_, "id " + quoted(id) + " stands twice (line " +
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

    void checkText(const Template& text) {
        if (text.constant()) return;
        for (const Template::Piece& piece : text.pieces()) {
            if (piece.variable && !isSet(piece.text))
                diagnostics_.warning(element_,
                                     "nothing in the signature gives " + quoted(piece.text) + " a value");
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
        return std::ranges::any_of(signature_.leaves,
                                   [&](const Leaf& leaf) { return leaf.id == id && provides(leaf, field); });
    }

    static bool provides(const Leaf& leaf, std::string_view field) {
        const auto& values = leafRules(leaf.kind).values;
        const auto sameName = [&](const Capture& capture) { return capture.name == field; };
        return std::ranges::find(values, field) != values.end() ||
               std::ranges::any_of(leaf.captures, sameName);
    }

    const Signature& signature_;
    const Element& element_;
    Diagnostics& diagnostics_;
};

}  // namespace

void checkIdentifiers(const Signature& signature, const Element& element, Diagnostics& diagnostics) {
    Checker(signature, element, diagnostics).check();
}

}  // namespace toolkit::quorvis
