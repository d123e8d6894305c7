#include "toolkit/quorvis/language/LeafParser.h"

#include <re2/re2.h>

#include <algorithm>
#include <charconv>

#include "toolkit/quorvis/formats/Records.h"
#include "toolkit/quorvis/language/Element.h"
#include "toolkit/quorvis/language/LeafValidator.h"
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

// Parses id, min and max, which every leaf has. False for every other attribute.
bool parseCommonAttribute(const Element& element, const ElementAttribute& given, Leaf& leaf,
                          Diagnostics& diagnostics) {
    if (given.name == "id") {
        leaf.id = given.value;
        if (!isId(given.value))
            diagnostics.problem(element,
                                "id " + quoted(given.value) + " is not made of letters, digits, _ and -");
        return true;
    }
    if (given.name != "min" && given.name != "max") return false;
    if (!isNumber(given.value, given.name == "min" ? leaf.min : leaf.max)) {
        diagnostics.problem(element,
                            std::string(given.name) + " " + quoted(given.value) + " is not a number");
    }
    return true;
}

void parseAttributes(const Element& element, const LeafRules& rules, Leaf& leaf, Diagnostics& diagnostics) {
    leaf.attributes.reserve(element.attributes.size());
    for (const ElementAttribute& given : element.attributes) {
        if (parseCommonAttribute(element, given, leaf, diagnostics)) continue;
        const std::optional<Attribute> attribute = attributeNamed(given.name);
        if (!attribute || !rules.allowed.contains(*attribute)) {
            reportUnknownAttribute(element, given.name, diagnostics);
        } else {
            leaf.attributes.push_back(
                {*attribute, parseTemplate(element, given.name, given.value, diagnostics)});
        }
    }
    std::ranges::sort(leaf.attributes, {}, &LeafAttribute::attribute);
    if (leaf.min > leaf.max) diagnostics.problem(element, "min is greater than max");
}

void checkPresence(const Element& element, const LeafRules& rules, const Leaf& leaf,
                   Diagnostics& diagnostics) {
    AttributeSet given;
    for (const LeafAttribute& attribute : leaf.attributes) given.insert(attribute.attribute);
    for (AttributeSet missing = rules.required.without(given); !missing.empty();
         missing = missing.without({missing.first()})) {
        reportMissingAttribute(element, nameOf(missing.first()), diagnostics);
    }
    if (rules.oneOf.empty() || rules.oneOf.meets(given)) return;
    std::string names;
    for (AttributeSet rest = rules.oneOf; !rest.empty(); rest = rest.without({rest.first()}))
        names.append(names.empty() ? "" : ", ").append(nameOf(rest.first()));
    diagnostics.problem(element, std::string(element.name) + " has none of the attributes " + names);
}

// Checks the name that a child element gives to a value.
void checkValueName(const Element& element, const LeafRules& rules, const Leaf& leaf, std::string_view name,
                    Diagnostics& diagnostics) {
    const auto sameName = [&](const auto& named) { return named.name == name; };
    if (!isVariableName(name)) {
        diagnostics.problem(element, "name " + quoted(name) + " cannot name a variable");
    } else if (std::ranges::find(rules.values, name) != rules.values.end()) {
        diagnostics.problem(element, "name " + quoted(name) + " is already that of a value of every " +
                                         std::string(rules.name));
    } else if (std::ranges::any_of(leaf.captures, sameName)) {
        diagnostics.problem(element, "name " + quoted(name) + " is already that of another group");
    } else if (std::ranges::any_of(leaf.keys, sameName)) {
        diagnostics.problem(element, "name " + quoted(name) + " is already that of another value");
    }
}

// Whether an item of this leaf may have a value of this name.
bool hasValue(const LeafRules& rules, const Leaf& leaf, std::string_view name) {
    const auto sameName = [&](const auto& named) { return named.name == name; };
    return std::ranges::find(rules.values, name) != rules.values.end() ||
           std::ranges::any_of(leaf.captures, sameName) || std::ranges::any_of(leaf.keys, sameName) ||
           (rules.kind == LeafKind::Process && name == kArguments);
}

// Checks the expression that a Capture searches a value of the items for.
void checkCaptureOfValue(const Element& element, const LeafRules& rules, const Leaf& leaf,
                         const Capture& capture, Diagnostics& diagnostics) {
    if (!hasValue(rules, leaf, capture.of))
        diagnostics.problem(element,
                            std::string(rules.name) + " has no value " + quoted(capture.of) + " here");
    std::string problem;
    if (capture.regex.find("${") != std::string_view::npos) {
        problem = "the expression of a value cannot have variables";
    } else if (const re2::RE2* const regex = compileRegex(capture.regex, {}, problem)) {
        if (capture.group > regex->NumberOfCapturingGroups())
            diagnostics.problem(element, "regex has no group " + std::to_string(capture.group));
    }
    if (!problem.empty()) diagnostics.problem(element, "regex " + quoted(capture.regex) + ": " + problem);
}

void parseCapture(const Element& element, const LeafRules& rules, Leaf& leaf, Diagnostics& diagnostics) {
    constexpr std::array<AttributeName, 4> kNames = {{{"group", true}, {"name", true}, {"of"}, {"regex"}}};
    const auto [group, name, of, regex] = valuesOf(element, kNames, diagnostics);
    requireNoChildren(element, diagnostics);
    if (!rules.captures && !of) reportMissingAttribute(element, "of", diagnostics);
    if (of && !regex) reportMissingAttribute(element, "regex", diagnostics);
    if (regex && !of && rules.captures) reportMissingAttribute(element, "of", diagnostics);
    if (!group || !name || of.has_value() != regex.has_value()) return;
    std::uint32_t number = 0;
    if (!isNumber(*group, number) || number > std::uint32_t{kMaxGroups}) {
        diagnostics.problem(element, "group " + quoted(*group) + " is not a number up to 32");
        return;
    }
    checkValueName(element, rules, leaf, *name, diagnostics);
    const Capture capture{static_cast<int>(number), *name, of.value_or(std::string_view()),
                          regex.value_or(std::string_view())};
    if (of) checkCaptureOfValue(element, rules, leaf, capture, diagnostics);
    leaf.captures.push_back(capture);
}

void parseValue(const Element& element, const LeafRules& rules, Leaf& leaf, Diagnostics& diagnostics) {
    constexpr std::array<AttributeName, 3> kNames = {{{"key", true}, {"name", true}, {"optional", false}}};
    const auto [key, name, optional] = valuesOf(element, kNames, diagnostics);
    requireNoChildren(element, diagnostics);
    if (!key || !name) return;
    if (optional && *optional != "true" && *optional != "false")
        diagnostics.problem(element, "optional " + quoted(*optional) + " is not true or false");
    if (leaf.keys.size() + 1 == kMaxRecordKeys)
        diagnostics.problem(element, "more than " + std::to_string(kMaxRecordKeys - 1) + " Value elements");
    checkValueName(element, rules, leaf, *name, diagnostics);
    leaf.keys.push_back({*key, *name, optional == "true"});
}

}  // namespace

Template parseTemplate(const Element& element, std::string_view attribute, std::string_view value,
                       Diagnostics& diagnostics) {
    Template text;
    std::string problem;
    if (!Template::parse(value, text, problem))
        diagnostics.problem(element, std::string(attribute) + " " + quoted(value) + ": " + problem);
    return text;
}

Leaf parseLeaf(const Element& element, const LeafRules& rules, const Settings& settings,
               Diagnostics& diagnostics) {
    Leaf leaf;
    leaf.kind = rules.kind;
    leaf.line = element.line;
    parseAttributes(element, rules, leaf, diagnostics);
    checkPresence(element, rules, leaf, diagnostics);
    forEachElement(element, diagnostics, [&](const Element& child) {
        if (rules.kind != LeafKind::Compare && child.name == "Capture") {
            parseCapture(child, rules, leaf, diagnostics);
        } else if (rules.keys && child.name == "Value") {
            parseValue(child, rules, leaf, diagnostics);
        } else {
            reportMisplaced(element, child, diagnostics);
        }
    });
    for (std::string& problem : problemsOf(leaf, settings)) diagnostics.problem(element, std::move(problem));
    for (std::string& warning : warningsFor(leaf)) diagnostics.warning(element, std::move(warning));
    return leaf;
}

}  // namespace toolkit::quorvis
