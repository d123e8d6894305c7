#pragma once

#include <memory_resource>
#include <optional>

#include "toolkit/quorvis/formats/DocumentText.h"
#include "toolkit/quorvis/formats/XmlParser.h"
#include "toolkit/quorvis/language/Element.h"

namespace toolkit::quorvis {

// Thrown by a visitor that takes no more; the sentence tells why.
struct TooManyElements {
    const char* text;
};

// Is given the elements of a document, one child of the root after the other.
class ElementVisitor {
  public:
    virtual ~ElementVisitor() = default;
    // The root as it starts, without children.
    virtual void onRoot(const Element& root) = 0;
    // A child of the root, or a text in it, with all that it holds. It lives until the function returns, and the values
    // of its attributes and its texts as long as the memory that they were put into.
    virtual void onChild(const Element& child) = 0;
};

// Reads a document of at most 64 levels, with at most 10,000 elements and texts in each child of the root and 1,000
// attributes in each element. Text of nothing but white space is left out, save within elements of the
// name `verbatim`.
std::optional<XmlFault> readElements(const DocumentText& document, std::string_view verbatim,
                                     std::pmr::memory_resource& texts, ElementVisitor& visitor);

}  // namespace toolkit::quorvis
