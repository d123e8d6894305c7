// Reads an XML document element by element.
#pragma once

#include <cstdint>
#include <memory_resource>
#include <optional>
#include <span>
#include <string>
#include <string_view>

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

// The content of an element as XML in ASCII. None when it contains a name that is not ASCII.
std::optional<std::string> innerXml(const Element& element);

}  // namespace toolkit::quorvis
