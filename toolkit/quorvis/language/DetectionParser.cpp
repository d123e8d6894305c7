#include "toolkit/quorvis/language/DetectionParser.h"

#include <algorithm>
#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "toolkit/quorvis/language/LeafParser.h"
#include "toolkit/quorvis/language/Variables.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMaxNameSize = std::size_t{1} << 10;
constexpr std::size_t kMaxVariables = 1'000;
constexpr std::size_t kMaxEach = 4;  // leaves, whose items are combined

std::optional<Condition::Kind> branchKind(std::string_view name) {
    if (name == "All") return Condition::Kind::All;
    if (name == "Any") return Condition::Kind::Any;
    if (name == "Not") return Condition::Kind::Not;
    if (name == "Optional") return Condition::Kind::Optional;
    return std::nullopt;
}

}  // namespace

DetectionParser::DetectionParser(const Element& parent, const Settings& settings, Signature& signature,
                                 Diagnostics& diagnostics)
    : parent_(parent), settings_(settings), signature_(signature), diagnostics_(diagnostics) {
    detection_.line = parent.line;
    detection_.firstLeaf = signature.leaves.size();
}

void DetectionParser::read(const Element& part) {
    struct Part {
        std::string_view name;
        void (DetectionParser::*read)(const Element& part);
    };
    static constexpr std::array<Part, 3> kParts = {{
        {"Each", &DetectionParser::readEach},
        {"Match", &DetectionParser::readMatch},
        {"Output", &DetectionParser::readOutput},
    }};
    const auto* const found = std::ranges::find(kParts, part.name, &Part::name);
    const auto position = static_cast<std::size_t>(found - kParts.begin());
    if (found == kParts.end() || position < nextPart_) return reportMisplaced(parent_, part, diagnostics_);
    nextPart_ = position + 1;
    (this->*found->read)(part);
}

void DetectionParser::finish() {
    if (detection_.each.empty() && !detection_.match)
        diagnostics_.problem(parent_, std::string(parent_.name) + " has neither Each nor Match");
    detection_.endLeaf = signature_.leaves.size();
    checkIdentifiers(signature_, detection_, parent_, diagnostics_);
    noteOwners(signature_, detection_);
    signature_.detections.push_back(std::move(detection_));
}

void DetectionParser::readEach(const Element& part) {
    valuesOf(part, std::array<AttributeName, 0>(), diagnostics_);
    forEachElement(part, diagnostics_, [&](const Element& child) {
        const LeafRules* const rules = leafRules(child.name);
        if (rules == nullptr || rules->kind == LeafKind::Compare) {
            reportMisplaced(part, child, diagnostics_);
        } else if (detection_.each.size() == kMaxEach) {
            diagnostics_.problem(child, "Each has more than " + std::to_string(kMaxEach) + " leaves");
        } else {
            detection_.each.push_back(addLeaf(child, *rules));
            if (signature_.leaves.back().id.empty()) reportMissingAttribute(child, "id", diagnostics_);
        }
    });
    if (detection_.each.empty()) diagnostics_.problem(part, "Each has no leaf");
}

void DetectionParser::readMatch(const Element& part) {
    valuesOf(part, std::array<AttributeName, 0>(), diagnostics_);
    std::vector<Condition> conditions = readConditions(part);
    if (conditions.size() > 1) diagnostics_.problem(part, "Match has more than one condition");
    detection_.match = conditions.empty() ? Condition() : std::move(conditions.front());
}

// Reports an element without conditions.
std::vector<Condition> DetectionParser::readConditions(const Element& parent) {
    std::vector<Condition> conditions;
    forEachElement(parent, diagnostics_, [&](const Element& child) {
        if (std::optional<Condition> condition = readCondition(parent, child))
            conditions.push_back(std::move(*condition));
    });
    if (conditions.empty()) diagnostics_.problem(parent, std::string(parent.name) + " has no condition");
    return conditions;
}

std::optional<Condition> DetectionParser::readCondition(const Element& parent, const Element& element) {
    ++conditions_;
    if (const LeafRules* const rules = leafRules(element.name))
        return Condition{Condition::Kind::Leaf, {}, addLeaf(element, *rules)};
    const std::optional<Condition::Kind> kind = branchKind(element.name);
    if (!kind) {
        reportMisplaced(parent, element, diagnostics_);
        return std::nullopt;
    }
    valuesOf(element, std::array<AttributeName, 0>(), diagnostics_);
    Condition condition{*kind, readConditions(element), 0};
    const bool single = *kind == Condition::Kind::Not || *kind == Condition::Kind::Optional;
    if (single && condition.children.size() > 1)
        diagnostics_.problem(element, std::string(element.name) + " has more than one condition");
    return condition;
}

std::size_t DetectionParser::addLeaf(const Element& element, const LeafRules& rules) {
    signature_.leaves.push_back(parseLeaf(element, rules, settings_, diagnostics_));
    return signature_.leaves.size() - 1;
}

void DetectionParser::readOutput(const Element& part) {
    valuesOf(part, std::array<AttributeName, 0>(), diagnostics_);
    forEachElement(part, diagnostics_, [&](const Element& child) {
        if (child.name != "Variable") return reportMisplaced(part, child, diagnostics_);
        readVariable(child);
    });
}

void DetectionParser::readVariable(const Element& element) {
    constexpr std::array<AttributeName, 2> kNames = {{{"name", true}, {"value", true}}};
    const auto [name, value] = valuesOf(element, kNames, diagnostics_);
    requireNoChildren(element, diagnostics_);
    if (!name || !value) return;
    if (name->empty()) diagnostics_.problem(element, "a Variable without a name");
    if (name->size() > kMaxNameSize) diagnostics_.problem(element, "a name of more than 1 KiB");
    if (detection_.output.size() == kMaxVariables) {
        diagnostics_.problem(element, "more than 1000 variables");
        return;
    }
    const auto sameName = [&wanted = *name](const OutputVariable& variable) {
        return variable.name == wanted;
    };
    if (std::ranges::any_of(detection_.output, sameName))
        diagnostics_.problem(element, "Variable " + quoted(*name) + " is declared twice");
    detection_.output.push_back({*name, parseTemplate(element, "value", *value, diagnostics_)});
}

}  // namespace toolkit::quorvis
