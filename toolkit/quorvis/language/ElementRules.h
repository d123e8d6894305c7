// What every element of a signature is held to.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "toolkit/quorvis/language/Complaints.h"
#include "toolkit/quorvis/language/Element.h"

namespace toolkit::quorvis {

// `"text"`, cut when it is long.
std::string quoted(std::string_view text);

void complainOfUnknownAttribute(const Element& element, std::string_view name, Complaints& complaints);
void complainOfMissingAttribute(const Element& element, std::string_view name, Complaints& complaints);

// A text or an element that has no place in `parent`.
void complainOfChild(const Element& parent, const Element& child, Complaints& complaints);
// Of every child.
void refuseChildren(const Element& element, Complaints& complaints);

struct AttributeName {
    std::string_view name;
    bool required = false;
};

// The values of these attributes, none for those that are not given.
template <std::size_t Count>
std::array<std::optional<std::string_view>, Count> valuesOf(const Element& element,
                                                            const std::array<AttributeName, Count>& names,
                                                            Complaints& complaints) {
    std::array<std::optional<std::string_view>, Count> values;
    for (const ElementAttribute& attribute : element.attributes) {
        bool known = false;
        for (std::size_t i = 0; i < Count && !known; ++i) {
            known = names[i].name == attribute.name;
            if (known) values[i] = attribute.value;
        }
        if (!known) complainOfUnknownAttribute(element, attribute.name, complaints);
    }
    for (std::size_t i = 0; i < Count; ++i) {
        if (names[i].required && !values[i]) complainOfMissingAttribute(element, names[i].name, complaints);
    }
    return values;
}

// Calls `take` with each child element; texts are complained of.
template <class Take>
void forEachElement(const Element& parent, Complaints& complaints, Take take) {
    for (const Element* child = parent.firstChild; child != nullptr; child = child->next) {
        if (child->isText()) {
            complainOfChild(parent, *child, complaints);
        } else {
            take(*child);
        }
    }
}

}  // namespace toolkit::quorvis
