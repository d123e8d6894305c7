#include "toolkit/quorvis/language/SignatureBuilder.h"

#include <algorithm>
#include <array>

#include "toolkit/quorvis/language/ElementRules.h"
#include "toolkit/quorvis/language/LeafReader.h"
#include "toolkit/quorvis/language/LeafTable.h"
#include "toolkit/quorvis/language/MetadataText.h"
#include "toolkit/quorvis/language/Names.h"

namespace toolkit::quorvis {

namespace {

constexpr std::size_t kMostConditions = 200;
constexpr std::size_t kLongestGuid = 128;
constexpr std::size_t kLongestName = std::size_t{1} << 10;
constexpr std::size_t kLargestMetadata = std::size_t{1} << 20;
constexpr std::size_t kMostVariables = 1'000;

// The parts of a signature in the order in which they stand.
enum class Part : std::uint8_t { Metadata, Preset, Each, Match, Output };
constexpr std::array<std::string_view, 5> kParts = {"Metadata", "Preset", "Each", "Match", "Output"};

bool isGuid(std::string_view text) {
    const auto allowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               std::string_view(".:_{}-").find(c) != std::string_view::npos;
    };
    return !text.empty() && text.size() <= kLongestGuid && std::ranges::all_of(text, allowed);
}

std::optional<Condition::Kind> branchKind(std::string_view name) {
    if (name == "All") return Condition::Kind::All;
    if (name == "Any") return Condition::Kind::Any;
    if (name == "Not") return Condition::Kind::Not;
    if (name == "Optional") return Condition::Kind::Optional;
    return std::nullopt;
}

class Builder {
  public:
    Builder(const Element& element, const Settings& settings, std::pmr::memory_resource& texts,
            Complaints& complaints)
        : element_(element), settings_(settings), texts_(texts), complaints_(complaints) {}

    Signature build() {
        signature_.line = element_.line;
        readHead();
        forEachElement(element_, complaints_, [this](const Element& part) { readPart(part); });
        if (!signature_.each && !signature_.match)
            complaints_.problem(element_, "Signature has neither Each nor Match");
        if (conditions_ > kMostConditions)
            complaints_.problem(element_, "Signature has more than 200 conditions");
        checkNames(signature_, element_, complaints_);
        return std::move(signature_);
    }

  private:
    void readHead() {
        constexpr std::array<AttributeName, 3> kNames = {{{"guid", true}, {"name", true}, {"revision"}}};
        const auto values = valuesOf(element_, kNames, complaints_);
        signature_.guid = values[0].value_or(std::string_view());
        if (values[0] && !isGuid(*values[0]))
            complaints_.problem(element_, "guid " + quoted(*values[0]) +
                                              " is not made of 1 to 128 letters, digits and .:_{}-");
        if (values[1]) signature_.name = readTemplate(element_, "name", *values[1], complaints_);
    }

    void readPart(const Element& part) {
        const auto* const found = std::ranges::find(kParts, part.name);
        const auto position = static_cast<std::size_t>(found - kParts.begin());
        if (found == kParts.end() || position < next_) {
            complainOfChild(element_, part, complaints_);
            return;
        }
        const auto kind = static_cast<Part>(position);
        next_ = kind == Part::Preset ? position : position + 1;  // it alone may come again
        switch (kind) {
            case Part::Metadata:
                return readMetadata(part);
            case Part::Preset:
                return readPreset(part);
            case Part::Each:
                return readEach(part);
            case Part::Match:
                return readMatch(part);
            case Part::Output:
                return readOutput(part);
        }
    }

    void readMetadata(const Element& part) {
        valuesOf(part, std::array<AttributeName, 0>(), complaints_);
        const std::optional<std::string> xml = innerXml(part);
        if (!xml) {
            complaints_.problem(part, "Metadata has a name beyond ASCII");
        } else if (xml->size() > kLargestMetadata) {
            complaints_.problem(part, "Metadata of more than 1 MiB");
        } else if (!xml->empty()) {
            auto* const copy = static_cast<char*>(texts_.allocate(xml->size(), 1));
            std::copy(xml->begin(), xml->end(), copy);
            signature_.metadata = {copy, xml->size()};
        }
    }

    void readPreset(const Element& part) {
        constexpr std::array<AttributeName, 2> kNames = {{{"name", true}, {"default"}}};
        const auto [name, fallback] = valuesOf(part, kNames, complaints_);
        refuseChildren(part, complaints_);
        if (!name) return;
        if (name->empty() || name->find_first_of("${}") != std::string_view::npos)
            complaints_.problem(part, "name " + quoted(*name) + " cannot name a variable");
        if (name->starts_with("quorvis."))
            complaints_.problem(part, "name " + quoted(*name) + " belongs to the scanner");
        const auto sameName = [&wanted = *name](const Preset& preset) { return preset.name == wanted; };
        if (std::ranges::any_of(signature_.presets, sameName))
            complaints_.problem(part, "Preset " + quoted(*name) + " stands twice");
        signature_.presets.push_back({*name, fallback});
    }

    void readEach(const Element& part) {
        valuesOf(part, std::array<AttributeName, 0>(), complaints_);
        forEachElement(part, complaints_, [&](const Element& child) {
            const LeafRules* const rules = leafRules(child.name);
            if (rules == nullptr || rules->kind == LeafKind::Compare) {
                complainOfChild(part, child, complaints_);
            } else if (signature_.each) {
                complaints_.problem(child, "Each has more than one leaf");
            } else {
                signature_.each = addLeaf(child, *rules);
                if (signature_.leaves.back().id.empty()) complainOfMissingAttribute(child, "id", complaints_);
            }
        });
        if (!signature_.each) complaints_.problem(part, "Each has no leaf");
    }

    void readMatch(const Element& part) {
        valuesOf(part, std::array<AttributeName, 0>(), complaints_);
        std::vector<Condition> conditions = readConditions(part);
        if (conditions.size() > 1) complaints_.problem(part, "Match has more than one condition");
        signature_.match = conditions.empty() ? Condition() : std::move(conditions.front());
    }

    // At least one, or else there is a problem.
    std::vector<Condition> readConditions(const Element& parent) {
        std::vector<Condition> conditions;
        forEachElement(parent, complaints_, [&](const Element& child) {
            if (std::optional<Condition> condition = readCondition(parent, child))
                conditions.push_back(std::move(*condition));
        });
        if (conditions.empty()) complaints_.problem(parent, std::string(parent.name) + " has no condition");
        return conditions;
    }

    std::optional<Condition> readCondition(const Element& parent, const Element& element) {
        ++conditions_;
        if (const LeafRules* const rules = leafRules(element.name))
            return Condition{Condition::Kind::Leaf, {}, addLeaf(element, *rules)};
        const std::optional<Condition::Kind> kind = branchKind(element.name);
        if (!kind) {
            complainOfChild(parent, element, complaints_);
            return std::nullopt;
        }
        valuesOf(element, std::array<AttributeName, 0>(), complaints_);
        Condition condition{*kind, readConditions(element), 0};
        const bool single = *kind == Condition::Kind::Not || *kind == Condition::Kind::Optional;
        if (single && condition.children.size() > 1)
            complaints_.problem(element, std::string(element.name) + " has more than one condition");
        return condition;
    }

    std::size_t addLeaf(const Element& element, const LeafRules& rules) {
        signature_.leaves.push_back(readLeaf(element, rules, settings_, complaints_));
        return signature_.leaves.size() - 1;
    }

    void readOutput(const Element& part) {
        valuesOf(part, std::array<AttributeName, 0>(), complaints_);
        forEachElement(part, complaints_, [&](const Element& child) {
            if (child.name != "Variable") return complainOfChild(part, child, complaints_);
            readVariable(child);
        });
    }

    void readVariable(const Element& element) {
        constexpr std::array<AttributeName, 2> kNames = {{{"name", true}, {"value", true}}};
        const auto [name, value] = valuesOf(element, kNames, complaints_);
        refuseChildren(element, complaints_);
        if (!name || !value) return;
        if (name->empty()) complaints_.problem(element, "a Variable without a name");
        if (name->size() > kLongestName) complaints_.problem(element, "a name of more than 1 KiB");
        if (signature_.output.size() == kMostVariables) {
            complaints_.problem(element, "more than 1000 variables");
            return;
        }
        const auto sameName = [&wanted = *name](const OutputVariable& variable) {
            return variable.name == wanted;
        };
        if (std::ranges::any_of(signature_.output, sameName))
            complaints_.problem(element, "Variable " + quoted(*name) + " stands twice");
        signature_.output.push_back({*name, readTemplate(element, "value", *value, complaints_)});
    }

    const Element& element_;
    const Settings& settings_;
    std::pmr::memory_resource& texts_;
    Complaints& complaints_;
    Signature signature_;
    std::size_t next_ = 0;  // the first part that may still come
    std::size_t conditions_ = 0;
};

}  // namespace

Signature readSignature(const Element& element, const Settings& settings, std::pmr::memory_resource& texts,
                        Complaints& complaints) {
    return Builder(element, settings, texts, complaints).build();
}

}  // namespace toolkit::quorvis
