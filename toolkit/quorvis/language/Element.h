// A piece of an XML document while it is read.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace toolkit::quorvis {

struct ElementAttribute {
    std::string_view name;
    std::string_view value;
};

// An element, or a text between elements: then its name is empty.
struct Element {
    std::string_view name;
    std::string_view text;
    std::span<const ElementAttribute> attributes;
    const Element* firstChild = nullptr;
    const Element* next = nullptr;  // behind it in the same parent
    std::uint32_t offset = 0;       // where it starts in the document
    std::uint32_t line = 0;

    bool isText() const { return name.empty(); }
};

}  // namespace toolkit::quorvis
