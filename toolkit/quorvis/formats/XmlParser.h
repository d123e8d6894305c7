#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "toolkit/quorvis/formats/DocumentText.h"

namespace toolkit::quorvis {

// Is told what stands in an XML document. All texts are UTF-8 and live until the function returns.
class XmlHandler {
  public:
    virtual ~XmlHandler() = default;
    // `attributes` are names and values in turn, then a null. `offset` is where the element starts.
    virtual void onStart(std::string_view name, const char* const* attributes, std::size_t offset) = 0;
    virtual void onEnd() = 0;
    // A text may come in several pieces.
    virtual void onText(std::string_view text, std::size_t offset) = 0;
};

struct XmlFault {
    std::size_t offset = 0;
    std::string text;
};

// Reads a document that has no document type declaration and whose elements are nested to at most this depth. None
// when it is well-formed. What the handler throws is thrown on.
std::optional<XmlFault> parseXml(const DocumentText& document, unsigned maxDepth, XmlHandler& handler);

}  // namespace toolkit::quorvis
