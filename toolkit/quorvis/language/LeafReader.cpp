#include "toolkit/quorvis/language/LeafReader.h"

#include <algorithm>
#include <charconv>

#include "toolkit/quorvis/language/ElementRules.h"
#include "toolkit/quorvis/language/LeafChecks.h"
#include "toolkit/quorvis/language/WholeNames.h"
#include "toolkit/quorvis/regex/Regex.h"

namespace toolkit::quorvis {

namespace {

bool isNumber(std::string_view text, std::uint32_t& number) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    return error == std::errc() && end == text.data() + text.size();
}

bool isId(std::string_view text) {
    const auto allowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
               c == '-';
    };
    return !text.empty() && text != "quorvis" && std::ranges::all_of(text, allowed);
}

bool isVariableName(std::string_view text) {
    return !text.empty() && text.find_first_of("${}") == std::string_view::npos;
}

// Of all leaves: id, min and max. False when it is none of them.
bool readCommon(const Element& element, const ElementAttribute& given, Leaf& leaf, Complaints& complaints) {
    if (given.name == "id") {
        leaf.id = given.value;
        if (!isId(given.value))
            complaints.problem(element,
                               "id " + quoted(given.value) + " is not made of letters, digits, _ and -");
        return true;
    }
    if (given.name != "min" && given.name != "max") return false;
    if (!isNumber(given.value, given.name == "min" ? leaf.min : leaf.max)) {
        complaints.problem(element, std::string(given.name) + " " + quoted(given.value) + " is not a number");
    }
    return true;
}

void readAttributes(const Element& element, const LeafRules& rules, Leaf& leaf, Complaints& complaints) {
    leaf.attributes.reserve(element.attributes.size());
    for (const ElementAttribute& given : element.attributes) {
        if (readCommon(element, given, leaf, complaints)) continue;
        const std::optional<Attribute> attribute = attributeNamed(given.name);
        if (!attribute || !rules.allowed.contains(*attribute)) {
            complainOfUnknownAttribute(element, given.name, complaints);
        } else {
            leaf.attributes.push_back(
                {*attribute, readTemplate(element, given.name, given.value, complaints)});
        }
    }
    std::ranges::sort(leaf.attributes, {}, &LeafAttribute::attribute);
    if (leaf.min > leaf.max) complaints.problem(element, "min is greater than max");
}

void checkPresence(const Element& element, const LeafRules& rules, const Leaf& leaf, Complaints& complaints) {
    AttributeSet given;
    for (const LeafAttribute& attribute : leaf.attributes) given.insert(attribute.attribute);
    for (AttributeSet missing = rules.required.without(given); !missing.empty();
         missing = missing.without({missing.first()})) {
        complainOfMissingAttribute(element, nameOf(missing.first()), complaints);
    }
    if (rules.oneOf.empty() || rules.oneOf.meets(given)) return;
    std::string names;
    for (AttributeSet rest = rules.oneOf; !rest.empty(); rest = rest.without({rest.first()}))
        names.append(names.empty() ? "" : ", ").append(nameOf(rest.first()));
    complaints.problem(element, std::string(element.name) + " has none of the attributes " + names);
}

void checkName(const Element& element, const LeafRules& rules, const Leaf& leaf, std::string_view name,
               Complaints& complaints) {
    const auto sameName = [&](const Capture& capture) { return capture.name == name; };
    if (!isVariableName(name)) {
        complaints.problem(element, "name " + quoted(name) + " cannot name a variable");
    } else if (std::ranges::find(rules.values, name) != rules.values.end()) {
        complaints.problem(
            element, "name " + quoted(name) + " is that of a value of every " + std::string(rules.name));
    } else if (std::ranges::any_of(leaf.captures, sameName)) {
        complaints.problem(element, "name " + quoted(name) + " was given to another group");
    }
}

void readCapture(const Element& element, const LeafRules& rules, Leaf& leaf, Complaints& complaints) {
    constexpr std::array<AttributeName, 2> kNames = {{{"group", true}, {"name", true}}};
    const auto [group, name] = valuesOf(element, kNames, complaints);
    refuseChildren(element, complaints);
    if (!group || !name) return;
    std::uint32_t number = 0;
    if (!isNumber(*group, number) || number > std::uint32_t{kMaxGroups}) {
        complaints.problem(element, "group " + quoted(*group) + " is not a number up to 32");
        return;
    }
    checkName(element, rules, leaf, *name, complaints);
    leaf.captures.push_back({static_cast<int>(number), *name});
}

}  // namespace

Template readTemplate(const Element& element, std::string_view attribute, std::string_view value,
                      Complaints& complaints) {
    Template text;
    std::string problem;
    if (!Template::parse(value, text, problem))
        complaints.problem(element, std::string(attribute) + " " + quoted(value) + ": " + problem);
    return text;
}

Leaf readLeaf(const Element& element, const LeafRules& rules, const Settings& settings,
              Complaints& complaints) {
    Leaf leaf;
    leaf.kind = rules.kind;
    leaf.line = element.line;
    readAttributes(element, rules, leaf, complaints);
    checkPresence(element, rules, leaf, complaints);
    forEachElement(element, complaints, [&](const Element& child) {
        if (rules.captures && child.name == "Capture") {
            readCapture(child, rules, leaf, complaints);
        } else {
            complainOfChild(element, child, complaints);
        }
    });
    for (std::string& problem : problemsOf(leaf, settings)) complaints.problem(element, std::move(problem));
    if (findsAnyNumber(leaf)) {
        complaints.warning(element, "the regex names no product and may find any number of the section");
    }
    for (std::string& warning : wildcardsInWholeNames(leaf)) complaints.warning(element, std::move(warning));
    return leaf;
}

}  // namespace toolkit::quorvis
