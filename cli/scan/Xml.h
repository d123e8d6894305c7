// Small XML documents: the texts that the library returns as trees, and text escaped for XML.
#pragma once

#include <expat.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "cli/scan/Field.h"

namespace zavcli {

struct XmlElement {
    std::string name;
    std::vector<Field> attributes;
    std::string text;  // its own text, without surrounding white space
    std::vector<XmlElement> children;
};

// The root element. Nothing if the text is not well-formed or has elements nested more than 100 deep.
std::optional<XmlElement> readXmlElement(std::string_view xml);

// The text as content of an XML element or of an attribute in double quotes. Characters that XML 1.0 does not allow
// become U+FFFD.
std::string escapeXml(std::string_view text);

// The parser for all XML that this command reads, with namespaces off and external entities never loaded.
class XmlParser {
  public:
    // A null `encoding` means that the document declares it. `data` is passed to the handlers.
    // Throws std::bad_alloc.
    XmlParser(const char* encoding, void* data, XML_StartElementHandler begin, XML_EndElementHandler end);

    XML_Parser get() const { return parser_.get(); }
    // Parses a whole document. Returns false if it is not well-formed, is too large, or a handler stopped the parser.
    bool parse(std::string_view document);

  private:
    std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser_;
};

}  // namespace zavcli
