// Problems and warnings of the elements of a signature, and the checks that all elements share.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvis/language/Element.h"

namespace toolkit::quorvis {

struct Diagnostic {
    std::uint32_t line = 0;
    std::uint32_t offset = 0;
    std::string text;
};

struct Diagnostics {
    std::vector<Diagnostic> problems;  // the signature is invalid
    std::vector<Diagnostic> warnings;

    void problem(const Element& at, std::string text) {
        problems.push_back({at.line, at.offset, std::move(text)});
    }
    void warning(const Element& at, std::string text) {
        warnings.push_back({at.line, at.offset, std::move(text)});
    }
};

// The text in double quotes, shortened when it is long.
std::string quoted(std::string_view text);

void reportUnknownAttribute(const Element& element, std::string_view name, Diagnostics& diagnostics);
void reportMissingAttribute(const Element& element, std::string_view name, Diagnostics& diagnostics);

// Reports a text or an element that is not allowed in `parent`.
void reportMisplaced(const Element& parent, const Element& child, Diagnostics& diagnostics);
// Reports every child of an element that must be empty.
void requireNoChildren(const Element& element, Diagnostics& diagnostics);

struct AttributeName {
    std::string_view name;
    bool required = false;
};

// The values of these attributes. Reports unknown attributes and missing required ones.
template <std::size_t Count>
std::array<std::optional<std::string_view>, Count> valuesOf(const Element& element,
                                                            const std::array<AttributeName, Count>& names,
                                                            Diagnostics& diagnostics) {
    std::array<std::optional<std::string_view>, Count> values;
    for (const ElementAttribute& attribute : element.attributes) {
        bool known = false;
        for (std::size_t i = 0; i < Count && !known; ++i) {
            known = names[i].name == attribute.name;
            if (known) values[i] = attribute.value;
        }
        if (!known) reportUnknownAttribute(element, attribute.name, diagnostics);
    }
    for (std::size_t i = 0; i < Count; ++i) {
        if (names[i].required && !values[i]) reportMissingAttribute(element, names[i].name, diagnostics);
    }
    return values;
}

// Calls `take` with each child element. Reports texts between them.
template <class Take>
void forEachElement(const Element& parent, Diagnostics& diagnostics, Take take) {
    for (const Element* child = parent.firstChild; child != nullptr; child = child->next) {
        if (child->isText()) {
            reportMisplaced(parent, *child, diagnostics);
        } else {
            take(*child);
        }
    }
}

}  // namespace toolkit::quorvis
