#include "toolkit/quorvis/language/Names.h"

#include <algorithm>
#include <string>

#include "toolkit/quorvis/language/ElementRules.h"
#include "toolkit/quorvis/language/LeafTable.h"

namespace toolkit::quorvis {

namespace {

using Ids = std::vector<std::string_view>;

class Checker {
  public:
    Checker(const Signature& signature, const Element& element, Complaints& complaints)
        : signature_(signature), element_(element), complaints_(complaints) {}

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
            complaints_.problem(element_, "id " + quoted(id) + " stands twice (line " +
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
        // Only one of the branches comes out, so each may use what the others do.
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
            if (piece.variable && !isGiven(piece.text))
                complaints_.warning(element_,
                                    "nothing in the signature gives " + quoted(piece.text) + " a value");
        }
    }

    // A name without a dot may be preset by the host.
    bool isGiven(std::string_view name) const {
        const std::size_t dot = name.find('.');
        if (dot == std::string_view::npos) return true;
        const auto sameName = [&](const Preset& preset) { return preset.name == name; };
        if (std::ranges::any_of(signature_.presets, sameName)) return true;
        const std::string_view id = name.substr(0, dot);
        const std::string_view field = name.substr(dot + 1);
        if (id == "quorvis") return field == "root" || field == "arch";
        return std::ranges::any_of(signature_.leaves,
                                   [&](const Leaf& leaf) { return leaf.id == id && gives(leaf, field); });
    }

    static bool gives(const Leaf& leaf, std::string_view field) {
        const auto& values = leafRules(leaf.kind).values;
        const auto sameName = [&](const Capture& capture) { return capture.name == field; };
        return std::ranges::find(values, field) != values.end() ||
               std::ranges::any_of(leaf.captures, sameName);
    }

    const Signature& signature_;
    const Element& element_;
    Complaints& complaints_;
};

}  // namespace

void checkNames(const Signature& signature, const Element& element, Complaints& complaints) {
    Checker(signature, element, complaints).check();
}

}  // namespace toolkit::quorvis
