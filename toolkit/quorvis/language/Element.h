// The elements of a document: reading them one by one, and reporting what is wrong with them.
#pragma once

#include <array>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "toolkit/quorvis/formats/XmlReader.h"

namespace toolkit::quorvis {

struct ElementAttribute {
    std::string_view name;
    std::string_view value;
};

// An element, or a text between elements, whose name is empty.
struct Element {
    std::string_view name;
    std::string_view text;
    std::span<const ElementAttribute> attributes;
    const Element* firstChild = nullptr;
    const Element* next = nullptr;  // sibling
    std::uint32_t offset = 0;       // of its first byte in the document
    std::uint32_t line = 0;

    bool isText() const { return name.empty(); }
};

// Thrown by a visitor to stop reading. The document is then refused for this reason.
struct TooManyElements {
    const char* reason;
};

// Receives the elements of a document, one child of the root at a time.
class ElementVisitor {
  public:
    virtual ~ElementVisitor() = default;
    // The root element, without its children.
    virtual void onRoot(const Element& root) = 0;
    // An element or text that is a child of the root, with all descendants. They are valid until the function returns;
    // texts and attribute values are valid as long as the `texts` of readElements().
    virtual void onChild(const Element& child) = 0;
};

// Reads a document with at most 64 levels of elements, 10,000 elements and texts per child of the root, and 1,000
// attributes per element. Text that is only white space is dropped, except within elements with the name `verbatim`.
std::optional<XmlFault> readElements(const DocumentText& document, std::string_view verbatim,
                                     std::pmr::memory_resource& texts, ElementVisitor& visitor);

// The content of an element as XML in ASCII, without the children that `skips` names. None when it contains a name that is
// not ASCII.
std::optional<std::string> innerXml(const Element& element, bool (*skips)(const Element& child) = nullptr);

// A problem of an element, or a warning about it.
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
